#include "client/Manifest.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include "client/InputFile.h"
#include "client/InputStream.h"
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
  return error == 0 ? "It is neither a regular file nor a FIFO: check the path."
                    : wordsFor(error) + ": " + adviceFor(error);
}

constexpr const char* kTooLarge = "It is larger than 1 MiB: check that it is the manifest.";

std::variant<std::string, UnreadableManifest> readStream(const std::string& name, InputStream& stream) {
  auto text = stream.read(static_cast<std::size_t>(kLargest) + 1);
  if (!text) return because(name, wordsFor(stream.error()) + ": " + adviceFor(stream.error()));
  if (std::cmp_greater(text->size(), kLargest)) return because(name, kTooLarge);
  return *std::move(text);
}

std::variant<std::string, UnreadableManifest> readFile(const std::string& path) {
  InputFile file(path);
  if (!file.isOpen()) return because(path, whyNotOpen(file.error()));
  const std::int64_t size = file.info().st_size;
  if (size > kLargest) return because(path, kTooLarge);
  // One byte more than there should be tells a file that grew.
  auto text = file.read(0, static_cast<std::size_t>(size) + 1);
  if (!text) return because(path, "Reading failed (" + wordsFor(file.error()) + "): try again with a copy of it.");
  // The helper takes a manifest that it cannot parse for one of version 0: half of one must not get there.
  if (std::cmp_not_equal(text->size(), size)) return because(path, "It changed while it was read: try again.");
  return *std::move(text);
}

}  // namespace

std::variant<std::string, UnreadableManifest> readManifest(const std::string& path) {
  if (path == "-") {
    InputStream input;
    return readStream("on standard input", input);
  }
  if (!InputStream::isFifo(path)) return readFile(path);
  InputStream fifo(path);
  return readStream(path, fifo);
}

}  // namespace halvo
