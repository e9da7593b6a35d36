# The link: a text stub for every library, made from the reviewed list, so that a symbol which is not on the list is a
# symbol that nobody defines.
set(IMPORTS "${CMAKE_CURRENT_SOURCE_DIR}/imports.txt")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${IMPORTS}")

function(macho_write_stub library symbols)
  if(NOT symbols)
    message(FATAL_ERROR "No symbols for ${library}")
  endif()
  list(TRANSFORM symbols PREPEND "'")
  list(TRANSFORM symbols APPEND "'")
  list(JOIN symbols ", " joined)
  file(CONFIGURE OUTPUT "${GENERATED}/stubs/${library}.tbd" @ONLY CONTENT
"--- !tapi-tbd
tbd-version: 4
targets: [ arm64-macos, x86_64-macos ]
install-name: '${library}'
exports:
  - targets: [ arm64-macos, x86_64-macos ]
    symbols: [ ${joined} ]
...
")
endfunction()

# imports.txt: a line "@Library" opens the imports of a library, one symbol a line follows; '#' starts a comment.
file(STRINGS "${IMPORTS}" import_lines REGEX "^[^#]")
set(library "")
set(libraries "")
foreach(line ${import_lines})
  if(line MATCHES "^@(.*)$")
    set(library "${CMAKE_MATCH_1}")
    list(APPEND libraries ${library})
  else()
    list(APPEND "symbols_of_${library}" "${line}")
  endif()
endforeach()
set(stubs "")
foreach(library ${libraries})
  macho_write_stub(${library} "${symbols_of_${library}}")
  list(APPEND stubs "${GENERATED}/stubs/${library}.tbd")
endforeach()

# The C++ library's symbols are too many to review and carry no privilege; what is too new for the deployment target is
# found by the compiler already.
execute_process(
  COMMAND nm -D --defined-only --format=just-symbols /usr/lib/llvm-19/lib/libc++.so.1 /usr/lib/llvm-19/lib/libc++abi.so.1
  OUTPUT_VARIABLE cxx_symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" cxx_symbols "${cxx_symbols}")
list(FILTER cxx_symbols INCLUDE REGEX "^_Z|^__cxa_|^__gxx_")
list(TRANSFORM cxx_symbols REPLACE "@.*$" "")
list(REMOVE_DUPLICATES cxx_symbols)
list(TRANSFORM cxx_symbols PREPEND "_")
macho_write_stub(libc++ "${cxx_symbols}")
list(APPEND stubs "${GENERATED}/stubs/libc++.tbd")

function(macho_link program arch)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${arch}/${program}")
  add_custom_command(OUTPUT "${output}"
    COMMAND "${MACHO_CLANG}" ${MACHO_FLAGS_${arch}} -fuse-ld=lld --ld-path=${MACHO_LLD} -nostdlib -nodefaultlibs
            -Wl,-dead_strip -Wl,-error-limit,0 -Wl,-platform_version,macos,13.0,13.0 ${ARGN} ${stubs} -o "${output}"
    DEPENDS ${ARGN} ${stubs}
    COMMENT "Linking ${program} for ${arch} against the reviewed imports" VERBATIM)
  add_custom_target(macho_${program}_${arch} ALL DEPENDS "${output}")
endfunction()
