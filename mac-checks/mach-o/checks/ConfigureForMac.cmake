# Configures the project as a Mac would, with or without its tests, and looks at what the generated build says of the
# helper. Arguments: SOURCE, BINARY (a folder of its own), TESTS (ON or OFF), GTEST (folder of GoogleTest's package file).
file(REMOVE_RECURSE "${BINARY}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BINARY}" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DHALVO_HARDENED=ON
          -DBUILD_TESTING=${TESTS} "-DGTest_DIR=${GTEST}"
          --toolchain "${CMAKE_CURRENT_LIST_DIR}/../Mac.toolchain.cmake"
  COMMAND_ERROR_IS_FATAL ANY)

file(STRINGS "${BINARY}/build.ninja" lines)
set(objc_files 0)
set(objc_file "")
set(found_plist FALSE)
foreach(line IN LISTS lines)
  if(line MATCHES "^build ([^ ]*/)?sim/[^:]*: [A-Z]+_COMPILER")
    message(FATAL_ERROR "A Mac would build a part of the simulation: ${line}")
  elseif(line MATCHES "^build ([^:]*): OBJCXX_COMPILER")
    set(objc_file "${CMAKE_MATCH_1}")
  elseif(objc_file AND line MATCHES "^  FLAGS = ")
    if(NOT line MATCHES " -fobjc-arc")
      message(FATAL_ERROR "${objc_file} is compiled without automatic reference counting.")
    endif()
    math(EXPR objc_files "${objc_files} + 1")
    set(objc_file "")
  elseif(line MATCHES "^  LINK_FLAGS = .*-Wl,-sectcreate,__TEXT,__info_plist,")
    set(found_plist TRUE)
    if(NOT line MATCHES " -Wl,-dead_strip_dylibs")
      message(FATAL_ERROR "The helper would load frameworks that it does not use.")
    endif()
  endif()
endforeach()
if(objc_files EQUAL 0)
  message(FATAL_ERROR "Nothing of Objective-C++ is compiled.")
endif()
if(NOT found_plist)
  message(FATAL_ERROR "No program has its Info.plist embedded.")
endif()

file(GLOB_RECURSE plists "${BINARY}/Info.plist")
if(NOT plists)
  message(FATAL_ERROR "The Info.plist that the link names was not made.")
endif()
