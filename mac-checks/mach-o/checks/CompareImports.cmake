# Compares what a linked program imports with the reviewed list, both ways: an entry that nothing uses any more is a
# permission that nobody would notice being used again.
# Arguments: NM, IMPORTS (the list), PROGRAM (a Mach-O file), ARCH (its processor).
cmake_minimum_required(VERSION 3.25)
file(STRINGS "${IMPORTS}" lines REGEX "^[^#@]")
set(reviewed "")
foreach(line ${lines})
  if(line MATCHES "^([^ ]+)( ${ARCH})?$")
    list(APPEND reviewed "${CMAKE_MATCH_1}")
  elseif(NOT line MATCHES "^[^ ]+ (arm64|x86_64)$")
    message(FATAL_ERROR "${IMPORTS}: neither a symbol nor a symbol and a processor: ${line}")
  endif()
endforeach()
execute_process(COMMAND "${NM}" --undefined-only --format=just-symbols "${PROGRAM}"
  OUTPUT_VARIABLE used COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" used "${used}")
# The C++ library is not reviewed symbol by symbol.
list(FILTER used EXCLUDE REGEX "^__Z|^___cxa_[^a]|^___cxa_allocate|^___gxx_|^$")
if(NOT used)
  message(FATAL_ERROR "The program imports nothing: there is nothing to compare.")
endif()

set(unlisted ${used})
list(REMOVE_ITEM unlisted ${reviewed})
set(unused ${reviewed})
list(REMOVE_ITEM unused ${used})
if(unlisted OR unused)
  message(FATAL_ERROR "Imports for ${ARCH} differ from ${IMPORTS}.\n  used, not listed: ${unlisted}\n  listed, not used: ${unused}")
endif()
list(LENGTH used count)
message(STATUS "${count} imports, all of them reviewed.")
