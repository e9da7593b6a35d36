#include "sim/frameworks/security/StateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>

#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

// Differs between threads and, through the process number, between processes.
std::filesystem::path scratchName(const std::filesystem::path& file) {
  static std::atomic<unsigned> counter{0};
  return file.string() + "." + std::to_string(::getpid()) + "." + std::to_string(counter++) + ".new";
}

// A folder into which every user writes needs its mode set: the umask narrows the one given to mkdir.
bool makeFolder(const std::filesystem::path& folder, mode_t mode) {
  if (::mkdir(folder.c_str(), mode) == 0) return ::chmod(folder.c_str(), mode) == 0;
  return std::filesystem::is_directory(folder);
}

}  // namespace

std::optional<nlohmann::json> readJSONObject(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  auto json = nlohmann::json::parse(stream, nullptr, false);
  return json.is_object() ? std::optional(std::move(json)) : std::nullopt;
}

bool replaceJSON(const std::filesystem::path& file, const nlohmann::json& json, mode_t folderMode) {
  if (!makeFolder(file.parent_path(), folderMode)) return false;
  const std::filesystem::path scratch = scratchName(file);
  std::error_code error;
  std::ofstream stream(scratch, std::ios::binary | std::ios::trunc);
  stream << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  stream.close();
  if (stream) std::filesystem::rename(scratch, file, error);
  if (stream && !error) return true;
  std::filesystem::remove(scratch, error);
  return false;
}

bool appendLine(const std::filesystem::path& file, std::string_view line) {
  constexpr mode_t kEveryUserWrites = 0666;
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kEveryUserWrites);
  if (descriptor < 0) return false;
  // Succeeds for the file's owner, which is enough: whoever made it opens it for the others.
  static_cast<void>(::fchmod(descriptor, kEveryUserWrites) == 0);
  const std::string text = std::string(line) + "\n";
  const bool written = ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(descriptor);
  return written;
}

std::optional<std::int32_t> scriptedFault(std::string_view call) {
  std::ifstream file(stateRoot() / "faults" / "authorization");
  std::string name;
  std::int32_t status = 0;
  while (file >> name >> status) {
    if (name == call) return status;
  }
  return std::nullopt;
}

}  // namespace halvo::sim
