# A ConfD_ROOT without an SDK stops the configuration with a message that says
# what is expected there, rather than falling back on anything.
#
# SOURCE_DIR, WORK_DIR, C_COMPILER, CXX_COMPILER

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/empty-sdk)
execute_process(
  COMMAND
    ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G Ninja
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    -DConfD_ROOT=${WORK_DIR}/empty-sdk
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE output)
string(REGEX REPLACE "[ \n]+" " " output "${output}")
string(FIND "${output}" "needs include/confd_lib.h and lib/libconfd.so" position)
if(NOT result OR position EQUAL -1)
  message(FATAL_ERROR "exit status ${result}: ${output}")
endif()
