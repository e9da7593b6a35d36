#include "client/Manifest.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include "client/InputFile.h"
#include "client/VisibleText.h"

namespace halvo {
namespace {

constexpr std::int64_t kLargest = std::int64_t{1024} * 1024;

UnreadableManifest because(const std::string& path, const std::string& reason) {
  return {"The manifest " + visibleText(path) + " cannot be read. " + reason};
}

std::string wordsFor(int error) { return std::generic_category().message(error); }

// What to do about a file that cannot be opened.
std::string adviceFor(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
      return "check the path.";
    case EACCES:
    case EPERM:
      return "check its permissions.";
    default:
      return "try again.";
  }
}

std::string whyNotOpen(int error) {
  return error == 0 ? "It is no regular file: check the path." : wordsFor(error) + ": " + adviceFor(error);
}

}  // namespace

std::variant<std::string, UnreadableManifest> readManifest(const std::string& path) {
  InputFile file(path);
  if (!file.isOpen()) return because(path, whyNotOpen(file.error()));
  const std::int64_t size = file.info().st_size;
  if (size > kLargest) return because(path, "It is larger than 1 MiB: check that it is the manifest.");
  // One byte more than there should be tells a file that grew.
  auto text = file.read(0, static_cast<std::size_t>(size) + 1);
  if (!text) return because(path, "Reading failed (" + wordsFor(file.error()) + "): try again with a copy of it.");
  // The helper takes a manifest that it cannot parse for one of version 0: half of one must not get there.
  if (std::cmp_not_equal(text->size(), size)) return because(path, "It changed while it was read: try again.");
  return *std::move(text);
}

}  // namespace halvo
