# How every target of this project is built: the language level, the warnings, the hardening, and one function per
# kind of target. A target that needs something else says so itself.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

option(BUILD_TESTING "Build the tests" ON)
# The presets switch this on. Who builds with a compiler that nobody has tried yet gets to see its warnings, and a program.
option(HALVO_WERROR "Warnings are errors" OFF)

include(GNUInstallDirs)

# A compiler cache, where there is one and its folder can be written: inside a sandbox it often cannot, and then the cache
# would fail every call. It is told that a precompiled header may be judged by its content.
find_program(CCACHE ccache)
if(CCACHE)
  execute_process(COMMAND "${CCACHE}" --get-config cache_dir
    OUTPUT_VARIABLE ccache_folder OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E make_directory "${ccache_folder}" OUTPUT_QUIET ERROR_QUIET)
  # Tried, since root passes every test of permissions and still cannot write to a file system that is read-only.
  execute_process(COMMAND "${CMAKE_COMMAND}" -E touch "${ccache_folder}/halvo-helper.tried"
    RESULT_VARIABLE ccache_unwritable OUTPUT_QUIET ERROR_QUIET)
  file(REMOVE "${ccache_folder}/halvo-helper.tried")
endif()
if(CCACHE AND NOT ccache_unwritable)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime "${CCACHE}")
endif()

find_package(Threads REQUIRED)

add_library(halvo_flags INTERFACE)
target_compile_options(halvo_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor $<$<BOOL:${HALVO_WERROR}>:-Werror>)
# GCC 12 takes the concatenation of a literal and a string for an overlapping copy once it optimises.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(halvo_flags INTERFACE -Wno-restrict)
endif()
target_include_directories(halvo_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_link_libraries(halvo_flags INTERFACE Threads::Threads)
# A Mac's linker would load every framework that a library below names, whether the program uses it or not.
if(APPLE)
  target_link_options(halvo_flags INTERFACE -Wl,-dead_strip_dylibs)
endif()

# A root daemon that parses hostile input gets every mitigation the compiler offers for free.
option(HALVO_HARDENED "Stack protector, FORTIFY, RELRO, PIE" OFF)
if(HALVO_HARDENED)
  target_compile_options(halvo_flags INTERFACE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(NOT APPLE)
    target_compile_options(halvo_flags INTERFACE -fstack-clash-protection -D_GLIBCXX_ASSERTIONS)
    target_link_options(halvo_flags INTERFACE -Wl,-z,relro,-z,now -pie)
  endif()
  # What ships does not tell where it was built: the same sources give the same bytes in every folder.
  target_compile_options(halvo_flags INTERFACE
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
endif()

# Comma-separated sanitizer names, as the compiler takes them: "address,undefined" or "thread".
set(HALVO_SANITIZE "" CACHE STRING "Sanitizers to build everything with")
if(HALVO_SANITIZE)
  target_compile_options(halvo_flags INTERFACE
    -fsanitize=${HALVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(halvo_flags INTERFACE -fsanitize=${HALVO_SANITIZE})
endif()

# Where programs count which of their lines run. They count in files that they map into memory, one for each program, so
# that the counts of one that is killed, or leaves without its exit handlers, are there as well.
set(HALVO_COVERAGE "" CACHE PATH "Folder for execution counts; empty to count nothing")
if(HALVO_COVERAGE)
  set(coverage_flags "-fprofile-instr-generate=${HALVO_COVERAGE}/%m%c.profraw")
  target_compile_options(halvo_flags INTERFACE
    ${coverage_flags} -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
  target_link_options(halvo_flags INTERFACE ${coverage_flags})
endif()

function(halvo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  # How a library was built is no business of who links the installed one.
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE $<BUILD_INTERFACE:halvo_flags> ${ARG_PRIVATE})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()

function(halvo_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PRIVATE" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE halvo_flags ${ARG_PRIVATE})
endfunction()

# What nearly every source of a kind includes is read once: for tests, and for the libraries of the simulation and of what
# tests share. Product sources see what they include themselves and no more. A Mac's tests are built without, which keeps
# each of them honest about its own includes; so is everything by GCC: what it precompiled is no system header to it any
# more, and its warnings about the library's own code come through.
if(NOT APPLE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(HALVO_PRECOMPILES ON)
endif()

function(halvo_precompiled_headers name header)
  target_precompile_headers(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/${header}")
  # What the compiler cache asks for, so that it knows the same header again.
  target_compile_options(${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
  target_link_libraries(${name} PRIVATE halvo_flags)
endfunction()

# Takes names of test programs.
function(halvo_precompile_test_headers)
  if(NOT HALVO_PRECOMPILES)
    return()
  endif()
  if(NOT TARGET halvo_test_headers)
    add_executable(halvo_test_headers EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/cmake/PrecompiledHeaders.cpp")
    halvo_precompiled_headers(halvo_test_headers TestHeaders.h)
    target_link_libraries(halvo_test_headers PRIVATE GTest::gmock)
  endif()
  foreach(name ${ARGN})
    target_precompile_headers(${name} REUSE_FROM halvo_test_headers)
  endforeach()
endfunction()

# Takes names of libraries.
function(halvo_precompile_simulation_headers)
  if(NOT HALVO_PRECOMPILES)
    return()
  endif()
  if(NOT TARGET halvo_simulation_headers)
    add_library(halvo_simulation_headers OBJECT EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/cmake/PrecompiledHeaders.cpp")
    halvo_precompiled_headers(halvo_simulation_headers SimulationHeaders.h)
  endif()
  foreach(name ${ARGN})
    target_precompile_headers(${name} REUSE_FROM halvo_simulation_headers)
  endforeach()
endfunction()

# How CTest runs a GoogleTest program: whole, since starting one costs more than most of its tests, or in as many parts
# as SHARDS says, so that slow tests run side by side. Its path is noted for ./test, which looks tests up by their names.
function(halvo_register_tests name shards)
  foreach(index RANGE 1 ${shards})
    set(test "${name}")
    if(shards GREATER 1)
      string(APPEND test "/${index}of${shards}")
    endif()
    math(EXPR index "${index} - 1")
    add_test(NAME "${test}" COMMAND ${name} --gtest_brief=1)
    set_tests_properties("${test}" PROPERTIES TIMEOUT 600 LABELS GoogleTest
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
  endforeach()
  set_property(GLOBAL APPEND_STRING PROPERTY halvo_test_programs "${name} $<TARGET_FILE:${name}>\n")
endfunction()

# For ./test: the name and the path of each test program, one a line.
function(halvo_list_test_programs)
  get_property(programs GLOBAL PROPERTY halvo_test_programs)
  file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/test-programs.txt" CONTENT "${programs}")
endfunction()

# One test program per module. DEPENDS names targets that the tests run.
function(halvo_test name)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "" "SHARDS" "SOURCES;PRIVATE;DEFINITIONS;DEPENDS" ${ARGN})
  if(NOT ARG_SHARDS)
    set(ARG_SHARDS 1)
  endif()
  find_package(GTest REQUIRED)
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE halvo_flags ${ARG_PRIVATE} GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
  if(ARG_DEPENDS)
    add_dependencies(${name} ${ARG_DEPENDS})
  endif()
  halvo_precompile_test_headers(${name})
  halvo_register_tests(${name} ${ARG_SHARDS})
endfunction()

# Objective-C++ files under automatic reference counting. A test is there only where tests are built.
function(halvo_reference_counting name)
  if(NOT TARGET ${name})
    return()
  endif()
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
  set_target_properties(${name} PROPERTIES OBJCXX_STANDARD 20 OBJCXX_STANDARD_REQUIRED ON OBJCXX_EXTENSIONS OFF)
endfunction()

# Makes `cmake --install` say a reason instead of doing half of its work or none.
function(halvo_refuse_install reason)
  install(CODE "message(FATAL_ERROR \"Nothing was installed: ${reason}.\")" ALL_COMPONENTS)
endfunction()

# Comes before every other rule, so that nothing is installed when a program is missing.
function(halvo_refuse_install_until_built)
  foreach(program ${ARGN})
    install(CODE "
      if(NOT EXISTS \"$<TARGET_FILE:${program}>\")
        message(FATAL_ERROR
          \"Nothing was installed: ${program} is not built yet; first: cmake --build ${CMAKE_BINARY_DIR}\")
      endif()")
  endforeach()
endfunction()
