# The build tree is laid out as the install tree, so that the host finds the
# plug-in and the models relative to itself in both.

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

set(models_subdir share/ospf-upgrade/yang)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/ospf-upgrade)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/yang
     ${PROJECT_BINARY_DIR}/${models_subdir} SYMBOLIC)
set(rules_subdir share/ospf-upgrade/rules)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/rules
     ${PROJECT_BINARY_DIR}/${rules_subdir} SYMBOLIC)
