#include "fuzz/support/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/support/Require.h"

namespace halvo::fuzz {

MemoryFile::MemoryFile()
    : descriptor_(::memfd_create("input", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  require(descriptor_ >= 0, "the system gives memory for a file");
}

MemoryFile::~MemoryFile() { ::close(descriptor_); }

void MemoryFile::write(std::string_view bytes) const {
  const auto size = static_cast<ssize_t>(bytes.size());
  require(::ftruncate(descriptor_, 0) == 0 && ::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == size,
          "the system keeps a file in memory");
}

}  // namespace halvo::fuzz
