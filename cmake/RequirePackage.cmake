# require_package(<name> <Debian package> [arguments of find_package...])
#
# find_package, except that its failure names the package to install.
macro(require_package name debian_package)
  find_package(${name} QUIET ${ARGN})
  if(NOT ${name}_FOUND)
    message(FATAL_ERROR "${name} is missing. Install it with "
                        "'apt-get install ${debian_package}' "
                        "or run scripts/setup.")
  endif()
endmacro()

# require_module(<prefix> <Debian package> <pkg-config module> <oldest> <below>)
#
# Likewise for what pkg-config knows, from version <oldest> up to, and without,
# <below>; gives the target PkgConfig::<prefix>.
macro(require_module prefix debian_package module oldest below)
  require_package(PkgConfig pkg-config)
  pkg_check_modules(${prefix} QUIET IMPORTED_TARGET ${module})
  if(NOT ${prefix}_FOUND)
    message(FATAL_ERROR "${module} is missing. Install it with "
                        "'apt-get install ${debian_package}' "
                        "or run scripts/setup.")
  endif()
  if(${prefix}_VERSION VERSION_LESS ${oldest}
     OR NOT ${prefix}_VERSION VERSION_LESS ${below})
    message(FATAL_ERROR "${module} ${${prefix}_VERSION} does not fit: "
                        "${oldest} or later is needed, below ${below}.")
  endif()
endmacro()
