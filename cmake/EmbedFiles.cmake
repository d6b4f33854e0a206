# embed_files(<target> <header> FILE...)
#
# Adds to the target a source that holds the texts of the files, which <header>
# declares as kit::host::k<Name><Ext>: page.css is kPageCss.

set(embed_script ${CMAKE_CURRENT_LIST_FILE})

function(embed_files target header)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_files.cc)
  set(files)
  foreach(file ${ARGN})
    list(APPEND files ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  endforeach()
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -D "FILES=${files}" -D SOURCE=${source} -D
            HEADER=${header} -P ${embed_script}
    DEPENDS ${files} ${embed_script}
    COMMENT "Embedding ${ARGN}"
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()

if(CMAKE_SCRIPT_MODE_FILE)
  set(text "#include \"${HEADER}\"\n\nnamespace kit::host {\n")
  foreach(file ${FILES})
    get_filename_component(stem ${file} NAME_WE)
    get_filename_component(extension ${file} LAST_EXT)
    set(name k)
    foreach(word ${stem} ${extension})
      string(REPLACE "." "" word ${word})
      string(SUBSTRING ${word} 0 1 first)
      string(SUBSTRING ${word} 1 -1 rest)
      string(TOUPPER ${first} first)
      string(APPEND name ${first}${rest})
    endforeach()
    file(READ ${file} content)
    string(APPEND text
           "\nconst char ${name}[] = R\"~~embedded~~(${content})~~embedded~~\";\n")
  endforeach()
  file(WRITE ${SOURCE} "${text}\n}  // namespace kit::host\n")
endif()
