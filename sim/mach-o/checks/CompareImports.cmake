# Compares what the linked programs import with the reviewed list, both ways: an entry that nothing uses any more is a
# permission that nobody would notice being used again.
# Arguments: NM, IMPORTS (the list), PROGRAMS (Mach-O files).
file(STRINGS "${IMPORTS}" reviewed REGEX "^[^#@]")
set(used "")
foreach(program ${PROGRAMS})
  execute_process(COMMAND "${NM}" --undefined-only --format=just-symbols "${program}"
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" symbols "${symbols}")
  list(APPEND used ${symbols})
endforeach()
list(REMOVE_DUPLICATES used)
# The C++ library is not reviewed symbol by symbol.
list(FILTER used EXCLUDE REGEX "^__Z|^___cxa_[^a]|^___cxa_allocate|^___gxx_|^$")
if(NOT used)
  message(FATAL_ERROR "The programs import nothing: there is nothing to compare.")
endif()

set(unlisted ${used})
list(REMOVE_ITEM unlisted ${reviewed})
set(unused ${reviewed})
list(REMOVE_ITEM unused ${used})
if(unlisted OR unused)
  message(FATAL_ERROR "Imports differ from ${IMPORTS}.\n  used, not listed: ${unlisted}\n  listed, not used: ${unused}")
endif()
list(LENGTH used count)
message(STATUS "${count} imports, all of them reviewed.")
