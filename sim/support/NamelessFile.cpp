#include "sim/support/NamelessFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace halvo::sim {

UniqueDescriptor namelessFile(std::string_view content) {
  UniqueDescriptor file(::memfd_create("stream", MFD_CLOEXEC));
  while (file.valid() && !content.empty()) {
    const ssize_t count = ::write(file.get(), content.data(), content.size());
    if (count < 0 && errno != EINTR) return {};
    if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
  }
  if (file.valid()) ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

std::string contentOf(const UniqueDescriptor& file) {
  std::string text;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = ::pread(file.get(), chunk.data(), chunk.size(), static_cast<off_t>(text.size()))) > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace halvo::sim
