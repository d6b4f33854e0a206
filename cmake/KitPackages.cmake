# What the stand-in, the host and their tests are built with.

include(RequirePackage)
# 2.1.30 (Debian 12) and 3.12.2 (Debian 13) are tested.
require_module(Libyang "libyang2-dev or libyang-dev" libyang 2.1 4)
require_module(Pcre2 libpcre2-dev libpcre2-8 10.30 11)
require_package(OpenSSL libssl-dev COMPONENTS Crypto)
require_package(CLI11 libcli11-dev)
require_package(fmt libfmt-dev)
require_package(nlohmann_json nlohmann-json3-dev)
if(BUILD_TESTING)
  require_package(GTest "libgtest-dev libgmock-dev")
endif()
