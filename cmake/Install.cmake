# Components: plugin (what a device gets), headers (of the plug-in), confd_sdk
# and log_sdk (the stand-ins, laid out as an SDK), host (the command line with
# its models and examples).

include(CMakePackageConfigHelpers)

install(
  TARGETS quellix_ext_ospf_prot_update
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT plugin)
install(
  DIRECTORY include/config_update
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT headers
  PATTERN update_passes.h EXCLUDE)

if(TARGET zqconfd)
  install(TARGETS zqconfd LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                                  COMPONENT log_sdk)
  install(
    DIRECTORY kit/log/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT log_sdk)
endif()

if(BUILD_KIT)
  install(TARGETS confd LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                                COMPONENT confd_sdk)
  install(
    DIRECTORY kit/confd/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT confd_sdk)

  # CMake looks there whatever the libraries' folder is.
  set(cmake_package_dir ${CMAKE_INSTALL_DATADIR}/cmake/ospf-upgrade-kit)
  configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/ospf-upgrade-kit-config.cmake.in
    ${PROJECT_BINARY_DIR}/ospf-upgrade-kit-config.cmake
    INSTALL_DESTINATION ${cmake_package_dir}
    PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
  write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/ospf-upgrade-kit-config-version.cmake
    COMPATIBILITY SameMajorVersion)
  install(
    FILES ${PROJECT_BINARY_DIR}/ospf-upgrade-kit-config.cmake
          ${PROJECT_BINARY_DIR}/ospf-upgrade-kit-config-version.cmake
    DESTINATION ${cmake_package_dir}
    COMPONENT host)

  install(TARGETS ospf-upgrade RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
                                       COMPONENT host)
  foreach(models before intermediate after)
    install(
      DIRECTORY yang/${models}
      DESTINATION ${models_subdir}
      COMPONENT host
      FILES_MATCHING
      PATTERN *.yang)
  endforeach()
  install(
    DIRECTORY rules/
    DESTINATION ${rules_subdir}
    COMPONENT host)
  install(
    DIRECTORY examples/
    DESTINATION share/ospf-upgrade/examples
    COMPONENT host
    PATTERN CMakeLists.txt EXCLUDE)
  # As the build has made them.
  foreach(folder man bash-completion fish zsh)
    install(
      DIRECTORY ${PROJECT_BINARY_DIR}/share/${folder}
      DESTINATION ${CMAKE_INSTALL_DATADIR}
      COMPONENT host)
  endforeach()
  install(
    FILES README.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT host)
  install(
    DIRECTORY docs/
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT host)
endif()
