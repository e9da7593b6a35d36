# Reads the project's own CMake files, as a Mac would, for the sources they name. The targets are real, so that those
# files may say anything about them, but nothing asks for them to be built.
find_package(Threads REQUIRED)

function(halvo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${ARG_SOURCES})
endfunction()

function(halvo_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PRIVATE" ${ARGN})
  add_executable(${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
  set_property(GLOBAL APPEND PROPERTY macho_programs ${name})
endfunction()

function(halvo_test)
  halvo_executable(${ARGN})
endfunction()

function(halvo_reference_counting)
endfunction()

# GoogleTest is all that a Mac's tests may need.
set(APPLE TRUE)
set(CMAKE_DISABLE_FIND_PACKAGE_rapidcheck TRUE)
foreach(module platform HalvoHelperXPC transport HalvoHelper main client examples)
  add_subdirectory("${PROJECT_SOURCE_DIR}/${module}" "${module}" EXCLUDE_FROM_ALL)
endforeach()
unset(APPLE)

# The sources of targets, with full paths.
function(macho_sources result)
  set(all "")
  foreach(target ${ARGN})
    get_target_property(sources ${target} SOURCES)
    get_target_property(folder ${target} SOURCE_DIR)
    foreach(source ${sources})
      cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${folder}" NORMALIZE)
      list(APPEND all "${source}")
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES all)
  set(${result} ${all} PARENT_SCOPE)
endfunction()
