# Builds a plug-in with the CMake package of an installed kit.
#
# BUILD_DIR, WORK_DIR, C_COMPILER

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK_DIR})
file(
  WRITE ${WORK_DIR}/CMakeLists.txt
  "cmake_minimum_required(VERSION 3.25)
project(with_kit C)
find_package(ospf-upgrade-kit 0.1 REQUIRED)
add_library(with_kit MODULE with_kit.c)
target_link_libraries(with_kit PRIVATE ConfD::confd Zqconfd::zqconfd)
")
file(
  WRITE ${WORK_DIR}/with_kit.c
  "#include <confd_maapi.h>
#include <zqconfd_log.h>
int update(int maapi_sock, int th, int cdb_sock) {
  (void)cdb_sock;
  if (get_conf_updt_log_handle() == 0) return -1;
  return maapi_exists(maapi_sock, th, \"/x\");
}
")
foreach(
  command
  "--install ${BUILD_DIR} --prefix ${WORK_DIR}/kit"
  "-S ${WORK_DIR} -B ${WORK_DIR}/build -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_PREFIX_PATH=${WORK_DIR}/kit"
  "--build ${WORK_DIR}/build")
  separate_arguments(command)
  execute_process(COMMAND ${CMAKE_COMMAND} ${command} OUTPUT_QUIET
                          COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(GET_RUNTIME_DEPENDENCIES LIBRARIES ${WORK_DIR}/build/libwith_kit.so
     RESOLVED_DEPENDENCIES_VAR libraries)
foreach(name confd zqconfd)
  if(NOT "${WORK_DIR}/kit/lib/lib${name}.so" IN_LIST libraries)
    message(FATAL_ERROR "not linked to the kit's lib${name}.so: ${libraries}")
  endif()
endforeach()
