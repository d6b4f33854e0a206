# What the stand-in, the host and their tests are built with.

include(RequirePackage)
require_module(Libyang libyang2-dev libyang)
require_package(CLI11 libcli11-dev)
require_package(fmt libfmt-dev)
require_package(nlohmann_json nlohmann-json3-dev)
if(BUILD_TESTING)
  require_package(GTest "libgtest-dev libgmock-dev")
endif()
