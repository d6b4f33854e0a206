# Finds a ConfD SDK below ConfD_ROOT: include/confd_lib.h and lib/libconfd.so.
# Gives the target ConfD::confd. Looks nowhere else, because the wrong SDK would
# only show on the device.

find_path(
  ConfD_INCLUDE_DIR confd_lib.h
  PATHS ${ConfD_ROOT}
  PATH_SUFFIXES include
  NO_DEFAULT_PATH)
find_library(
  ConfD_LIBRARY libconfd.so
  PATHS ${ConfD_ROOT}
  PATH_SUFFIXES lib ${CMAKE_INSTALL_LIBDIR}
  NO_DEFAULT_PATH)
mark_as_advanced(ConfD_INCLUDE_DIR ConfD_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
  ConfD
  REQUIRED_VARS ConfD_LIBRARY ConfD_INCLUDE_DIR
  REASON_FAILURE_MESSAGE
    "ConfD_ROOT (${ConfD_ROOT}) needs include/confd_lib.h and lib/libconfd.so")

if(ConfD_FOUND AND NOT TARGET ConfD::confd)
  add_library(ConfD::confd SHARED IMPORTED)
  set_target_properties(
    ConfD::confd
    PROPERTIES IMPORTED_LOCATION ${ConfD_LIBRARY}
               INTERFACE_INCLUDE_DIRECTORIES ${ConfD_INCLUDE_DIR})
endif()
