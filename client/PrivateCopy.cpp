#include "client/PrivateCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "client/InputFile.h"
#include "client/InterruptHandling.h"
#include "client/VisibleText.h"

namespace halvo {
namespace {

constexpr std::int64_t kLargest = std::int64_t{256} * 1024 * 1024;
constexpr std::size_t kPiece = std::size_t{1024} * 1024;

// Answers an errno value, 0 on success.
int writeWhole(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

// The same. A file that grows meanwhile is no package that is ready to be installed.
int copyWhole(InputFile& from, int to) {
  std::int64_t offset = 0;
  while (offset <= kLargest) {
    const auto piece = from.read(offset, kPiece);
    if (!piece) return from.error();
    if (piece->empty()) return 0;
    if (const int error = writeWhole(to, *piece)) return error;
    offset += static_cast<std::int64_t>(piece->size());
  }
  return EFBIG;
}

}  // namespace

PrivateCopy::PrivateCopy(const std::string& package, const std::string& temporaryFolder)
    : folder_((std::filesystem::path(temporaryFolder) / "halvo-app.XXXXXX").string()) {
  // Before the folder exists: mkdtemp puts its name here first, so that no moment is left in which a signal ends the
  // process and the folder stays.
  removeOnInterrupt(nullptr, folder_.c_str());
  if (::mkdtemp(folder_.data()) == nullptr) {
    error_ = errno;
    folder_.clear();
    return;
  }
  file_ = folder_ + "/" + std::filesystem::path(package).filename().string();
  removeOnInterrupt(file_.c_str(), folder_.c_str());
}

PrivateCopy::~PrivateCopy() {
  // What was not made has no path, and that removes nothing.
  ::unlink(file_.c_str());
  ::rmdir(folder_.c_str());
  removeOnInterrupt(nullptr, nullptr);
}

bool PrivateCopy::fillFrom(const std::string& package) {
  if (error_ != 0) return false;
  InputFile from(package, InputFile::Links::refused);
  if (!from.isOpen()) {
    error_ = from.error();
    return false;
  }
  constexpr mode_t kOwnerOnly = 0600;
  UniqueDescriptor to(::open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  if (!to.valid()) {
    error_ = errno;
    return false;
  }
  error_ = copyWhole(from, to.get());
  // A file system may report a full disk only now.
  if (!to.close() && error_ == 0) error_ = errno;
  return error_ == 0;
}

std::variant<std::unique_ptr<const PrivateCopy>, NoPrivateCopy> PrivateCopy::of(const std::string& package,
                                                                                const std::string& temporaryFolder) {
  std::unique_ptr<PrivateCopy> copy(new PrivateCopy(package, temporaryFolder));
  if (copy->fillFrom(package)) return std::unique_ptr<const PrivateCopy>(std::move(copy));
  const std::string why = copy->error_ == 0 ? "it is no regular file" : std::generic_category().message(copy->error_);
  return NoPrivateCopy{"The package " + visibleText(package) +
                       " lies in a folder that the system keeps from the helper, and could not be copied out of it (" +
                       why + "). Put it into another folder, such as /Users/Shared, and try again."};
}

std::string userTemporaryFolder() {
  std::string folder(::confstr(_CS_DARWIN_USER_TEMP_DIR, nullptr, 0), '\0');
  if (folder.empty()) return "/tmp";
  ::confstr(_CS_DARWIN_USER_TEMP_DIR, folder.data(), folder.size());
  folder.pop_back();  // the NUL
  return folder;
}

}  // namespace halvo
