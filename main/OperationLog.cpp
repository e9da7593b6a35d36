#include "main/OperationLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "platform/SystemLog.h"

namespace halvo {
namespace {

// O_NONBLOCK keeps a FIFO that nobody reads from holding the operation, and every later one behind it, for ever.
constexpr int kAppending = O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC;

UniqueDescriptor openExisting(const std::string& path) { return UniqueDescriptor(::open(path.c_str(), kAppending)); }

// O_EXCL does not create through a link.
UniqueDescriptor create(const std::string& path) {
  constexpr mode_t kDefaultMode = 0666;
  return UniqueDescriptor(::open(path.c_str(), kAppending | O_CREAT | O_EXCL, kDefaultMode));
}

bool isLinkToNowhere(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode) && ::stat(path.c_str(), &info) != 0;
}

// Writing through the link would let whoever planted it choose where root makes a file; leaving it would lose every
// line from then on.
UniqueDescriptor createInPlaceOfLink(const std::string& path) {
  const std::string fresh = path + ".new";
  // From a helper that was killed half way.
  ::unlink(fresh.c_str());
  UniqueDescriptor file = create(fresh);
  if (file.valid() && ::rename(fresh.c_str(), path.c_str()) == 0) return file;
  ::unlink(fresh.c_str());
  return {};
}

UniqueDescriptor openOrCreate(const std::string& path) {
  UniqueDescriptor existing = openExisting(path);
  if (existing.valid()) return existing;
  UniqueDescriptor created = isLinkToNowhere(path) ? createInPlaceOfLink(path) : create(path);
  if (created.valid()) return created;
  // Whoever lost the race to create opens what the other made.
  return openExisting(path);
}

bool isFile(const UniqueDescriptor& descriptor) {
  struct stat info {};
  return ::fstat(descriptor.get(), &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

std::string halvoLogDate(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &parts);
  return {text.data(), length};
}

OperationLog::OperationLog(std::string path, Clock now) : path_(std::move(path)), now_(std::move(now)) {}

void OperationLog::write(std::string_view message) const {
  halvoSystemLog("halvo-helper: " + std::string(message));
  const std::string line = halvoLogDate(now_()) + ": " + std::string(message) + "\n";
  const UniqueDescriptor file = openOrCreate(path_);
  if (isFile(file)) static_cast<void>(::write(file.get(), line.data(), line.size()) < 0);
}

}  // namespace halvo
