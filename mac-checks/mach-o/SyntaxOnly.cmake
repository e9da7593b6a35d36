# What is read by a compiler and not linked: the tests that a Mac builds, and all of it once more by an older compiler,
# that of the oldest developer tools which can build this. libc++ does not know that compiler any more and says so in a
# warning.
find_package(GTest REQUIRED)

# GoogleTest lies beside the C library's headers, which must not be found.
find_path(GTEST_INCLUDE gtest/gtest.h REQUIRED)
foreach(folder gtest gmock)
  file(MAKE_DIRECTORY "${GENERATED}/googletest")
  file(CREATE_LINK "${GTEST_INCLUDE}/${folder}" "${GENERATED}/googletest/${folder}" SYMBOLIC)
endforeach()

get_property(test_programs GLOBAL PROPERTY macho_programs)
list(REMOVE_ITEM test_programs ${programs})
macho_sources(test_sources ${test_programs})
set(test_flags -isystem "${GENERATED}/googletest")
# Paths that tests are given: here any text will do.
foreach(program ${test_programs})
  get_target_property(definitions ${program} COMPILE_DEFINITIONS)
  if(definitions)
    list(TRANSFORM definitions REPLACE "^([A-Z_]+)=.*$" "-D\\1=\"path\"")
    list(APPEND test_flags ${definitions})
  endif()
endforeach()

# Usage: macho_read(<name> CLANG <compiler> ARCH <arch> FLAGS <flag>... SOURCES <source>...); one stamp per source.
function(macho_read name)
  cmake_parse_arguments(ARG "" "CLANG;ARCH" "FLAGS;SOURCES" ${ARGN})
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  set(flags ${MACHO_FLAGS} ${MACHO_FLAGS_${ARG_ARCH}} ${ARG_FLAGS})
  set(common "${PROJECT_SOURCE_DIR}/cmake/TestHeaders.h")
  set(precompiled "${folder}/TestHeaders.pch")
  file(MAKE_DIRECTORY "${folder}")
  add_custom_command(OUTPUT "${precompiled}"
    COMMAND "${ARG_CLANG}" ${flags} -MD -MF "${precompiled}.d" -x c++-header "${common}" -o "${precompiled}"
    DEPENDS "${common}" DEPFILE "${precompiled}.d"
    COMMENT "Reading the common headers for ${ARG_ARCH} (${name})" VERBATIM)

  set(stamps "")
  foreach(source ${ARG_SOURCES})
    file(RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${source}")
    set(stamp "${folder}/${relative}.read")
    get_filename_component(stamp_folder "${stamp}" DIRECTORY)
    file(MAKE_DIRECTORY "${stamp_folder}")
    if(source MATCHES "\\.mm$")
      set(language ${MACHO_OBJC_FLAGS})
    elseif(source IN_LIST test_sources)
      set(language -include-pch "${precompiled}")
    else()
      set(language "")  # sees what it includes itself, no more
    endif()
    add_custom_command(OUTPUT "${stamp}"
      COMMAND "${ARG_CLANG}" ${flags} ${language} -MD -MF "${stamp}.d" -MT "${stamp}" -fsyntax-only "${source}"
      COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
      DEPENDS "${source}" "${precompiled}" DEPFILE "${stamp}.d"
      COMMENT "Reading ${relative} for ${ARG_ARCH} (${name})" VERBATIM)
    list(APPEND stamps "${stamp}")
  endforeach()
  add_custom_target(macho_${name} ALL DEPENDS ${stamps})
endfunction()

macho_read(tests CLANG "${MACHO_CLANG}" ARCH arm64 FLAGS ${test_flags} SOURCES ${test_sources})

macho_sources(product_sources HalvoHelperXPC HalvoHelper halvo_main halvo_client halvo_platform halvo_transport
  ${programs})
macho_read(older CLANG "${MACHO_OLDER_CLANG}" ARCH x86_64 FLAGS -Wno-\#warnings ${test_flags}
  SOURCES ${product_sources} ${test_sources})
