# What is looked at besides compiling and linking: the protocol's metadata, the imports, the facts about the frameworks,
# and on demand the static analyzer's and clang-tidy's findings in the Objective-C++ files.
foreach(arch arm64 x86_64)
  set(module "${CMAKE_CURRENT_BINARY_DIR}/metadata/${arch}/protocol.ll")
  get_filename_component(folder "${module}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  add_custom_command(OUTPUT "${module}"
    COMMAND "${MACHO_CLANG_${arch}}" ${MACHO_FLAGS} ${MACHO_FLAGS_${arch}} ${MACHO_OBJC_FLAGS} -MD -MF "${module}.d"
            -S -emit-llvm "${CMAKE_CURRENT_SOURCE_DIR}/checks/ProtocolUnderTest.mm" -o "${module}"
    DEPENDS checks/ProtocolUnderTest.mm DEPFILE "${module}.d"
    COMMENT "Emitting the protocol's metadata for ${arch}" VERBATIM)
  list(APPEND metadata "${module}")
endforeach()
add_custom_target(macho_protocol_metadata DEPENDS ${metadata})

add_executable(halvo_macho_test checks/ProtocolMetadataTest.cpp)
add_dependencies(halvo_macho_test macho_protocol_metadata)
target_compile_features(halvo_macho_test PRIVATE cxx_std_20)
target_include_directories(halvo_macho_test PRIVATE "${PROJECT_SOURCE_DIR}")
target_compile_definitions(halvo_macho_test PRIVATE HALVO_MACHO_METADATA_DIR="${CMAKE_CURRENT_BINARY_DIR}/metadata")
target_link_libraries(halvo_macho_test PRIVATE GTest::gmock GTest::gtest_main)
halvo_register_tests(halvo_macho_test 1)

foreach(program ${programs})
  foreach(arch arm64 x86_64)
    add_test(NAME MachO.ImportsAreTheReviewedOnes/${program}/${arch}
      COMMAND "${CMAKE_COMMAND}" "-DNM=${MACHO_NM}" "-DIMPORTS=${CMAKE_CURRENT_SOURCE_DIR}/${program}.imports"
              "-DPROGRAM=${CMAKE_CURRENT_BINARY_DIR}/${arch}/${program}" -DARCH=${arch}
              -P "${CMAKE_CURRENT_SOURCE_DIR}/checks/CompareImports.cmake")
  endforeach()
endforeach()

# The same by library, as the bill of materials of a release names them.
find_program(MACHO_OTOOL llvm-otool-19 REQUIRED)
foreach(arch arm64 x86_64)
  add_test(NAME MachO.BillOfMaterialsNamesWhatIsLinked/${arch}
    COMMAND "${PROJECT_SOURCE_DIR}/packaging/bill-of-materials" --version "${PROJECT_VERSION}" --system macos
            --otool "${MACHO_OTOOL}" "${CMAKE_CURRENT_BINARY_DIR}/${arch}/halvo-helper"
            "${CMAKE_CURRENT_BINARY_DIR}/${arch}/halvo-app")
endforeach()

# The simulated frameworks against the facts about the real ones. The first test writes what the others compile.
set(facts "${GENERATED}/facts.cpp")
add_test(NAME MachO.FactsCoverWhatTheFrameworksDeclare
  COMMAND "${CMAKE_COMMAND}" "-DTABLES=${PROJECT_SOURCE_DIR}/docs/mac-interfaces.md"
          "-DINCLUDE=${PROJECT_SOURCE_DIR}/sim/frameworks/include" "-DOUTPUT=${facts}"
          -P "${CMAKE_CURRENT_SOURCE_DIR}/checks/Facts.cmake")
set_tests_properties(MachO.FactsCoverWhatTheFrameworksDeclare PROPERTIES FIXTURES_SETUP facts)
foreach(arch arm64 x86_64)
  add_test(NAME MachO.FrameworksEqualTheFacts/${arch}
    COMMAND "${MACHO_CLANG_${arch}}" ${MACHO_FLAGS} ${MACHO_FLAGS_${arch}} -Wno-four-char-constants -fsyntax-only "${facts}")
  set_tests_properties(MachO.FrameworksEqualTheFacts/${arch} PROPERTIES FIXTURES_REQUIRED facts)
endforeach()

# For tools/tidy. One stamp per file: found once, a clean file is not looked at again until it or a header changes.
macho_sources(example_sources halvo-example-objective-c)
foreach(source ${mac_sources} ${example_sources})
  if(NOT source MATCHES "\\.mm$")
    continue()
  endif()
  get_filename_component(name "${source}" NAME)
  set(stamp "${CMAKE_CURRENT_BINARY_DIR}/analysis/${name}")
  set(flags ${MACHO_FLAGS} ${MACHO_FLAGS_arm64} ${MACHO_OBJC_FLAGS})
  add_custom_command(OUTPUT "${stamp}.analyzed"
    COMMAND "${MACHO_CLANG_arm64}" ${flags} -MD -MF "${stamp}.d" -MT "${stamp}.analyzed" -fsyntax-only "${source}"
    COMMAND "${MACHO_CLANG_arm64}" ${flags} --analyze -Xclang -analyzer-output=text -Xclang -analyzer-werror
            -Xclang -analyzer-checker=core,cplusplus,nullability,osx,deadcode "${source}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}.analyzed"
    DEPENDS "${source}" DEPFILE "${stamp}.d"
    COMMENT "Analyzing ${name}" VERBATIM)
  add_custom_command(OUTPUT "${stamp}.tidied"
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/quietly" "${MACHO_TIDY}" --quiet --warnings-as-errors=* "${source}" -- ${flags}
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}.tidied"
    DEPENDS "${source}" "${stamp}.analyzed"
    COMMENT "Tidying ${name}" VERBATIM)
  list(APPEND analyzed "${stamp}.tidied")
endforeach()
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/analysis")
add_custom_target(macho_analysis DEPENDS ${analyzed})

# The build files as a Mac reads them.
foreach(tests ON OFF)
  add_test(NAME MachO.BuildFilesSuitAMac/Tests${tests}
    COMMAND "${CMAKE_COMMAND}" "-DSOURCE=${PROJECT_SOURCE_DIR}" "-DBINARY=${CMAKE_CURRENT_BINARY_DIR}/mac-tests-${tests}"
            -DTESTS=${tests} "-DGTEST=${GTest_DIR}" -P "${CMAKE_CURRENT_SOURCE_DIR}/checks/ConfigureForMac.cmake")
endforeach()
