# What is read by a compiler and not linked: the tests that a Mac builds, and examples, by the older compiler. What
# today's has to say about them, the other presets show.
find_package(GTest REQUIRED)

# GoogleTest lies beside the C library's headers, which must not be found.
find_path(GTEST_INCLUDE gtest/gtest.h REQUIRED)
foreach(folder gtest gmock)
  file(MAKE_DIRECTORY "${GENERATED}/googletest")
  file(CREATE_LINK "${GTEST_INCLUDE}/${folder}" "${GENERATED}/googletest/${folder}" SYMBOLIC)
endforeach()

get_property(test_programs GLOBAL PROPERTY macho_programs)
list(REMOVE_ITEM test_programs ${programs})
macho_sources(test_sources halvo_testing ${test_programs})
set(test_flags -isystem "${GENERATED}/googletest")
# Paths that tests are given: here any text will do.
foreach(program ${test_programs})
  get_target_property(definitions ${program} COMPILE_DEFINITIONS)
  if(definitions)
    list(TRANSFORM definitions REPLACE "^([A-Z_]+)=.*$" "-D\\1=\"path\"")
    list(APPEND test_flags ${definitions})
  endif()
endforeach()

set(folder "${CMAKE_CURRENT_BINARY_DIR}/tests")
set(flags ${MACHO_FLAGS} ${MACHO_FLAGS_x86_64} ${test_flags})
set(common "${PROJECT_SOURCE_DIR}/cmake/TestHeaders.h")
set(precompiled "${folder}/TestHeaders.pch")
file(MAKE_DIRECTORY "${folder}")
add_custom_command(OUTPUT "${precompiled}"
  COMMAND "${MACHO_CLANG_x86_64}" ${flags} -MD -MF "${precompiled}.d" -x c++-header "${common}" -o "${precompiled}"
  DEPENDS "${common}" DEPFILE "${precompiled}.d"
  COMMENT "Reading the common headers for x86_64" VERBATIM)

# One stamp per source.
set(stamps "")
foreach(source ${test_sources})
  file(RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${source}")
  set(stamp "${folder}/${relative}.read")
  get_filename_component(stamp_folder "${stamp}" DIRECTORY)
  file(MAKE_DIRECTORY "${stamp_folder}")
  if(source MATCHES "\\.mm$")
    set(language ${MACHO_OBJC_FLAGS})
  else()
    set(language -include-pch "${precompiled}")
  endif()
  add_custom_command(OUTPUT "${stamp}"
    COMMAND "${MACHO_CLANG_x86_64}" ${flags} ${language} -MD -MF "${stamp}.d" -MT "${stamp}" -fsyntax-only "${source}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS "${source}" "${precompiled}" DEPFILE "${stamp}.d"
    COMMENT "Reading ${relative} for x86_64" VERBATIM)
  list(APPEND stamps "${stamp}")
endforeach()
add_custom_target(macho_tests ALL DEPENDS ${stamps})
