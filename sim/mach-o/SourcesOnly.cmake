# Reads the product's own CMake files for the sources they name. The targets are real, so that those files may say
# anything about them, but nothing asks for them to be built.
find_package(Threads REQUIRED)

function(halvo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${ARG_SOURCES})
endfunction()

function(halvo_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PRIVATE" ${ARGN})
  add_executable(${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
endfunction()

# Tests are no part of the product.
set(BUILD_TESTING OFF)

foreach(module HalvoHelperXPC HalvoHelper main client)
  add_subdirectory("${PROJECT_SOURCE_DIR}/${module}" "${module}" EXCLUDE_FROM_ALL)
endforeach()
