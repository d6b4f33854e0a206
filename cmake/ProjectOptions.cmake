# How our own code is compiled and linked. The flags sit on one interface target
# that every target of ours links privately, so that they reach nobody else.

set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug or Release" FORCE)
endif()

if(USE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(CCACHE ccache)
  mark_as_advanced(CCACHE)
  if(CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
  endif()
endif()

add_library(project_options INTERFACE)

target_compile_options(
  project_options
  INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
    # No binary names the machine that it was built on.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(WARNINGS_AS_ERRORS)
  target_compile_options(project_options INTERFACE -Werror)
endif()

if(SANITIZE)
  # The vptr check needs a free descriptor and reports nonsense without one,
  # which tests of what happens then would trip over.
  set(sanitizer_flags -fsanitize=address,undefined -fno-sanitize=vptr
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(project_options INTERFACE ${sanitizer_flags})
  target_link_options(project_options INTERFACE ${sanitizer_flags})
  target_compile_definitions(
    project_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
endif()
if(COVERAGE)
  target_compile_options(project_options INTERFACE --coverage
                                                   -fprofile-abs-path)
  target_link_options(project_options INTERFACE --coverage)
endif()
if(BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
    message(FATAL_ERROR "The fuzzers need clang: use the preset 'fuzz' "
                        "(Debian packages clang and libclang-rt-14-dev).")
  endif()
  # Coverage feedback from all code under test; main() only in the fuzzers.
  target_compile_options(project_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(project_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
