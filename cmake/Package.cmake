# Debian packages, by CPack: ospf-upgrade-kit, which has everything, and
# quellix-ospf-prot-update, the plug-in as a device gets it. The preset
# `package` lays them out (scripts/package).

set(PACKAGE_REVISION "1" CACHE STRING "Revision of the Debian packages")
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(kit_package ospf-upgrade-kit)
set(plugin_package quellix-ospf-prot-update)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT
    "OSPF upgrade kit maintainers <maintainers@ospf-upgrade.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
    WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})

set(CPACK_DEBIAN_KIT_PACKAGE_NAME ${kit_package})
set(CPACK_DEBIAN_KIT_DESCRIPTION
    "rehearses the upgrade of a router's configuration
Runs the upgrade plug-in of a router's software on a copy of its
configuration, shows every change and every line of the log, and tells
whether the new release will accept the result.

The package holds the program ospf-upgrade, stand-ins for the two
libraries that the plug-in uses on the device, with their headers and a
CMake package, and the data models of the OSPF upgrade.")
set(CPACK_DEBIAN_KIT_PACKAGE_DEPENDS
    "${plugin_package} (= ${PROJECT_VERSION}-${PACKAGE_REVISION})")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME ${plugin_package})
set(CPACK_DEBIAN_PLUGIN_DESCRIPTION
    "plug-in that upgrades a router's OSPF configuration
Converts the stored OSPFv2 and OSPFv3 configuration of a router when its
software is upgraded and the data model changes.

The libraries libconfd.so and libzqconfd.so come with the device, whose
upgrade framework loads the plug-in; ospf-upgrade-kit has stand-ins for
both.")

# What Debian wants to find in every package; not part of an installation from
# these sources.
find_program(GZIP gzip REQUIRED)
mark_as_advanced(GZIP)
foreach(group kit plugin)
  set(package ${${group}_package})
  set(changelog ${PROJECT_BINARY_DIR}/packaging/${package}/changelog.Debian)
  configure_file(${packaging}/changelog.in ${changelog} @ONLY)
  execute_process(COMMAND ${GZIP} -9nf ${changelog} COMMAND_ERROR_IS_FATAL ANY)
  install(
    FILES ${changelog}.gz ${packaging}/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    COMPONENT ${group}_papers
    EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
cpack_add_component_group(kit)
cpack_add_component_group(plugin)
foreach(component host headers confd_sdk log_sdk kit_papers)
  cpack_add_component(${component} GROUP kit)
endforeach()
foreach(component plugin plugin_papers)
  cpack_add_component(${component} GROUP plugin)
endforeach()
