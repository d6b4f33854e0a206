# ConfD::confd and Zqconfd::zqconfd, the two libraries of the device that the
# plug-in uses: from an SDK, or the stand-ins.

if(ConfD_ROOT)
  find_package(ConfD REQUIRED)
elseif(TARGET confd)
  add_library(ConfD::confd ALIAS confd)
else()
  message(FATAL_ERROR "With BUILD_KIT=OFF there is no stand-in for ConfD: "
                      "name an SDK with -DConfD_ROOT=DIR.")
endif()

if(Zqconfd_ROOT)
  find_package(Zqconfd REQUIRED)
else()
  add_library(Zqconfd::zqconfd ALIAS zqconfd)
endif()
