# How every target of this project is built: the language level, the warnings, the hardening, and one function per
# kind of target. A target that needs something else says so itself.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

option(BUILD_TESTING "Build the tests" ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

find_package(Threads REQUIRED)

add_library(halvo_flags INTERFACE)
target_compile_options(halvo_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Werror)
# GCC 12 takes the concatenation of a literal and a string for an overlapping copy once it optimises.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(halvo_flags INTERFACE -Wno-restrict)
endif()
target_include_directories(halvo_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_link_libraries(halvo_flags INTERFACE Threads::Threads)

# A root daemon that parses hostile input gets every mitigation the compiler offers for free.
option(HALVO_HARDENED "Stack protector, FORTIFY, RELRO, PIE" OFF)
if(HALVO_HARDENED)
  target_compile_options(halvo_flags INTERFACE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(NOT APPLE)
    target_compile_options(halvo_flags INTERFACE -fstack-clash-protection -D_GLIBCXX_ASSERTIONS)
    target_link_options(halvo_flags INTERFACE -Wl,-z,relro,-z,now -pie)
  endif()
endif()

# Comma-separated sanitizer names, as the compiler takes them: "address,undefined" or "thread".
set(HALVO_SANITIZE "" CACHE STRING "Sanitizers to build everything with")
if(HALVO_SANITIZE)
  target_compile_options(halvo_flags INTERFACE
    -fsanitize=${HALVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(halvo_flags INTERFACE -fsanitize=${HALVO_SANITIZE})
endif()

function(halvo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE halvo_flags ${ARG_PRIVATE})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
endfunction()

function(halvo_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PRIVATE" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE halvo_flags ${ARG_PRIVATE})
endfunction()

# One test program per module. GoogleTest's discovery gives every test its own CTest entry, so that they run in
# parallel and each name shows in the report.
function(halvo_test name)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;PRIVATE" ${ARGN})
  find_package(GTest REQUIRED)
  include(GoogleTest)
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE halvo_flags ${ARG_PRIVATE} GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# Objective-C++ files under automatic reference counting. A test is there only where tests are built.
function(halvo_reference_counting name)
  if(NOT TARGET ${name})
    return()
  endif()
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
  set_target_properties(${name} PROPERTIES OBJCXX_STANDARD 20 OBJCXX_STANDARD_REQUIRED ON OBJCXX_EXTENSIONS OFF)
endfunction()
