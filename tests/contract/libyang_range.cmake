# A libyang outside of the range stops the configuration with a message that
# names what is there and what is needed.
#
# SOURCE_DIR, WORK_DIR, C_COMPILER, CXX_COMPILER

cmake_minimum_required(VERSION 3.25)

foreach(version 2.0.194 4.0.0)
  file(REMOVE_RECURSE ${WORK_DIR})
  file(
    WRITE ${WORK_DIR}/pkgconfig/libyang.pc
    "Name: libyang\nDescription: of another release\nVersion: ${version}\n")
  execute_process(
    COMMAND
      ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${WORK_DIR}/pkgconfig
      ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G Ninja
      -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  string(FIND "${output}" "libyang ${version} does not fit: 2.1 or later is"
         position)
  if(NOT result OR position EQUAL -1)
    message(FATAL_ERROR "exit status ${result}: ${output}")
  endif()
endforeach()
