# Configures the project as a Mac would, with or without its tests, and looks at what the generated build says of the
# helper. Arguments: SOURCE, BINARY (a folder of its own), TESTS (ON or OFF), GTEST (folder of GoogleTest's package file).
file(REMOVE_RECURSE "${BINARY}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BINARY}" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DHALVO_HARDENED=ON
          -DBUILD_TESTING=${TESTS} "-DGTest_DIR=${GTEST}"
          --toolchain "${CMAKE_CURRENT_LIST_DIR}/../Mac.toolchain.cmake"
  COMMAND_ERROR_IS_FATAL ANY)

file(STRINGS "${BINARY}/build.ninja" lines)
set(found_arc FALSE)
set(found_plist FALSE)
set(found_simulation FALSE)
foreach(line IN LISTS lines)
  if(line MATCHES "^  FLAGS = .*-fobjc-arc")
    set(found_arc TRUE)
  elseif(line MATCHES "^  LINK_FLAGS = .*-Wl,-sectcreate,__TEXT,__info_plist,")
    set(found_plist TRUE)
  elseif(line MATCHES "^build .*[/ ]sim/.*CXX_COMPILER")
    set(found_simulation TRUE)
  endif()
endforeach()
if(NOT found_arc)
  message(FATAL_ERROR "Nothing is compiled with automatic reference counting.")
endif()
if(NOT found_plist)
  message(FATAL_ERROR "No program has its Info.plist embedded.")
endif()
if(found_simulation)
  message(FATAL_ERROR "A Mac would build parts of the simulation.")
endif()

file(GLOB_RECURSE plists "${BINARY}/Info.plist")
if(NOT plists)
  message(FATAL_ERROR "The Info.plist that the link names was not made.")
endif()
