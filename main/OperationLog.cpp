#include "main/OperationLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "platform/SystemLog.h"

namespace halvo {
namespace {

UniqueDescriptor openForAppending(const std::string& path) {
  UniqueDescriptor existing(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
  if (existing.valid()) return existing;
  // O_EXCL does not create through a link that dangles; whoever lost the race to create opens what the other made.
  constexpr mode_t kDefaultMode = 0666;
  UniqueDescriptor created(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, kDefaultMode));
  if (created.valid()) return created;
  return UniqueDescriptor(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
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
  const UniqueDescriptor file = openForAppending(path_);
  if (file.valid()) static_cast<void>(::write(file.get(), line.data(), line.size()) < 0);
}

}  // namespace halvo
