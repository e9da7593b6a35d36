#include "client/Manifest.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "client/VisibleText.h"

namespace halvo {
namespace {

constexpr std::uintmax_t kLargest = std::uintmax_t{1024} * 1024;

UnreadableManifest because(const std::string& path, const std::string& reason) {
  return {"The manifest " + visibleText(path) + " cannot be read. " + reason};
}

}  // namespace

std::variant<std::string, UnreadableManifest> readManifest(const std::string& path) {
  std::error_code error;
  const auto kind = std::filesystem::status(path, error).type();
  if (error) return because(path, error.message() + ": check the path.");
  // Opening a FIFO would wait for somebody to write into it.
  if (kind != std::filesystem::file_type::regular) return because(path, "It is no regular file: check the path.");

  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) return because(path, std::generic_category().message(errno) + ": check its permissions.");
  std::string text(kLargest + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad()) return because(path, "Reading failed: try again with a copy of it.");
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kLargest) return because(path, "It is larger than 1 MiB: check that it is the manifest.");
  return text;
}

}  // namespace halvo
