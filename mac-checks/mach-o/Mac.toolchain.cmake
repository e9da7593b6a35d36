# Lets the project's build files be read as on a Mac, up to and including the generated build; there is no SDK here, so
# nothing is compiled with it.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_OBJCXX_COMPILER /usr/bin/clang++-19)  # in full: CMake looks before it searches PATH
set(CMAKE_CXX_COMPILER_TARGET arm64-apple-macosx13)
set(CMAKE_OBJCXX_COMPILER_TARGET arm64-apple-macosx13)
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")

# What CMake would learn by compiling and linking.
set(CMAKE_CXX_COMPILER_WORKS TRUE)
set(CMAKE_OBJCXX_COMPILER_WORKS TRUE)
set(CMAKE_CXX_ABI_COMPILED TRUE)
set(CMAKE_OBJCXX_ABI_COMPILED TRUE)
set(CMAKE_SIZEOF_VOID_P 8)
set(CMAKE_HAVE_LIBC_PTHREAD TRUE CACHE INTERNAL "")

# Tools of the Mac that a generated build only names.
foreach(tool AR RANLIB INSTALL_NAME_TOOL)
  set(CMAKE_${tool} /usr/bin/false CACHE FILEPATH "")
endforeach()
