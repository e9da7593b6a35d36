# The link: a text stub for every library, made from the program's reviewed list, so that a symbol which is not on the
# list is a symbol that nobody defines.

function(macho_write_stub path library symbols)
  if(NOT symbols)
    message(FATAL_ERROR "No symbols for ${library}")
  endif()
  list(TRANSFORM symbols PREPEND "'")
  list(TRANSFORM symbols APPEND "'")
  list(JOIN symbols ", " joined)
  file(CONFIGURE OUTPUT "${path}" @ONLY CONTENT
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

# A list of imports: a line "@Library" opens those of a library, one symbol a line follows, with the processor behind it
# if the other one does not use it; '#' starts a comment.
function(macho_write_stubs result program arch)
  set(imports "${CMAKE_CURRENT_SOURCE_DIR}/${program}.imports")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${imports}")
  file(STRINGS "${imports}" lines REGEX "^[^#]")
  set(libraries "")
  foreach(line ${lines})
    if(line MATCHES "^@(.*)$")
      set(library "${CMAKE_MATCH_1}")
      list(APPEND libraries ${library})
    elseif(line MATCHES "^([^ ]+)( ${arch})?$")
      list(APPEND "symbols_of_${library}" "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(stubs "")
  foreach(library ${libraries})
    set(stub "${GENERATED}/stubs/${program}/${arch}/${library}.tbd")
    macho_write_stub("${stub}" ${library} "${symbols_of_${library}}")
    list(APPEND stubs "${stub}")
  endforeach()
  set(${result} ${stubs} PARENT_SCOPE)
endfunction()

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
set(CXX_STUB "${GENERATED}/stubs/libc++.tbd")
macho_write_stub("${CXX_STUB}" libc++ "${cxx_symbols}")

# Usage: macho_link(<program> <arch> OBJECTS <object>... LIBRARY <object>...); those of the library go in when needed.
function(macho_link program arch)
  cmake_parse_arguments(ARG "" "" "OBJECTS;LIBRARY" ${ARGN})
  macho_write_stubs(stubs ${program} ${arch})
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${arch}/${program}")
  add_custom_command(OUTPUT "${output}"
    COMMAND "${MACHO_CLANG_arm64}" ${MACHO_FLAGS_${arch}} -fuse-ld=lld --ld-path=${MACHO_LLD} -nostdlib -nodefaultlibs
            -Wl,-dead_strip -Wl,--error-limit=0 -Wl,-platform_version,macos,13.0,13.0
            ${ARG_OBJECTS} -Wl,--start-lib ${ARG_LIBRARY} -Wl,--end-lib ${stubs} ${CXX_STUB} -o "${output}"
    DEPENDS ${ARG_OBJECTS} ${ARG_LIBRARY} ${stubs} ${CXX_STUB}
    COMMENT "Linking ${program} for ${arch} against the reviewed imports" VERBATIM)
  add_custom_target(macho_${program}_${arch} ALL DEPENDS "${output}")
endfunction()
