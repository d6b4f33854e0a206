# Builds the plug-in as a device maker would: against two SDKs, which are laid
# out from the installed stand-ins, and with nothing of the kit in reach.
#
# SOURCE_DIR, BUILD_DIR, WORK_DIR, C_COMPILER, CXX_COMPILER

cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(
    COMMAND ${ARGV}
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  if(result)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(build ${WORK_DIR}/build)
foreach(sdk confd log)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --component ${sdk}_sdk
      --prefix ${WORK_DIR}/${sdk}-sdk)
endforeach()

# Without what only the kit uses.
foreach(package PkgConfig fmt CLI11 nlohmann_json GTest benchmark)
  list(APPEND without -DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON)
endforeach()
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${build} -G Ninja
    -DCMAKE_BUILD_TYPE=Release
    -DCMAKE_C_COMPILER=${C_COMPILER}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    -DConfD_ROOT=${WORK_DIR}/confd-sdk
    -DZqconfd_ROOT=${WORK_DIR}/log-sdk
    ${without})
run(${CMAKE_COMMAND} --build ${build})
run(${CMAKE_CTEST_COMMAND} --test-dir ${build} --no-tests=error
    --output-on-failure -R "^contract\\.(plugin|header\\.plugin)")

# The compiler read the SDKs' headers, and no others of the same names.
run(ninja -C ${build} -t deps)
string(REGEX MATCHALL "[^ \n]*/(confd|zqconfd)_[a-z]+\\.h" headers "${output}")
list(REMOVE_DUPLICATES headers)
foreach(header confd-sdk/include/confd_lib.h confd-sdk/include/confd_cdb.h
               confd-sdk/include/confd_maapi.h log-sdk/include/zqconfd_log.h)
  if(NOT "${WORK_DIR}/${header}" IN_LIST headers)
    message(FATAL_ERROR "${header} was not used, but: ${headers}")
  endif()
endforeach()
foreach(header IN LISTS headers)
  cmake_path(IS_PREFIX WORK_DIR ${header} of_sdk)
  if(NOT of_sdk)
    message(FATAL_ERROR "used beside the SDKs: ${header}")
  endif()
endforeach()
