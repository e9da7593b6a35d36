#include "main/InstalledDriver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <span>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "platform/PropertyList.h"

namespace halvo {
namespace {

// Room for thousands of honest lists; what is longer would only fill the helper's memory.
constexpr std::size_t kMostBytes = std::size_t{16} * 1024 * 1024;

// Whoever can write into the driver's bundle chose what is there. O_NONBLOCK: opening a FIFO without a writer would
// hold this operation, and every later one behind it, for ever.
UniqueDescriptor openFile(const std::string& path) {
  UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat info {};
  const bool isFile = file.valid() && ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode);
  return isFile ? std::move(file) : UniqueDescriptor();
}

// Nothing of a file that cannot be read to its end. The bound is kept while reading: the file may be growing.
std::string contentsOf(const std::string& path) {
  const UniqueDescriptor file = openFile(path);
  if (!file.valid()) return {};
  std::array<char, 65'536> chunk{};
  std::string bytes;
  while (bytes.size() <= kMostBytes) {
    const ssize_t count = ::read(file.get(), chunk.data(), chunk.size());
    if (count == 0) return bytes;
    if (count > 0) {
      bytes.append(chunk.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return {};
    }
  }
  return {};
}

}  // namespace

std::optional<std::string> halvoInstalledDriverVersion(const std::string& infoPlist) {
  const std::string bytes = contentsOf(infoPlist);
  const auto plist = halvoReadPropertyList(std::as_bytes(std::span(bytes)));
  if (!plist) return std::nullopt;
  const auto found = plist->find("CFBundleVersion");
  if (found == plist->end()) return std::nullopt;
  const auto* version = std::get_if<std::string>(&found->second);
  return version == nullptr ? std::nullopt : std::optional(*version);
}

}  // namespace halvo
