# Finds an SDK of the log library below Zqconfd_ROOT: include/zqconfd_log.h and lib/libzqconfd.so.
# Gives the target Zqconfd::zqconfd. Looks nowhere else, because the wrong SDK would
# only show on the device.

find_path(
  Zqconfd_INCLUDE_DIR zqconfd_log.h
  PATHS ${Zqconfd_ROOT}
  PATH_SUFFIXES include
  NO_DEFAULT_PATH)
find_library(
  Zqconfd_LIBRARY libzqconfd.so
  PATHS ${Zqconfd_ROOT}
  PATH_SUFFIXES lib ${CMAKE_INSTALL_LIBDIR}
  NO_DEFAULT_PATH)
mark_as_advanced(Zqconfd_INCLUDE_DIR Zqconfd_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
  Zqconfd
  REQUIRED_VARS Zqconfd_LIBRARY Zqconfd_INCLUDE_DIR
  REASON_FAILURE_MESSAGE
    "Zqconfd_ROOT (${Zqconfd_ROOT}) needs include/zqconfd_log.h and lib/libzqconfd.so")

if(Zqconfd_FOUND AND NOT TARGET Zqconfd::zqconfd)
  add_library(Zqconfd::zqconfd SHARED IMPORTED)
  set_target_properties(
    Zqconfd::zqconfd
    PROPERTIES IMPORTED_LOCATION ${Zqconfd_LIBRARY}
               INTERFACE_INCLUDE_DIRECTORIES ${Zqconfd_INCLUDE_DIR})
endif()
