#include "sim/frameworks/security/StateFiles.h"

#include <sys/stat.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "sim/support/Files.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

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
  return replaceFile(file, json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
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
