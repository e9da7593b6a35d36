#include "sim/launchd/Registrations.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "sim/support/Files.h"

namespace halvo::sim {

Registrations::Registrations(std::filesystem::path file) : file_(std::move(file)) {}

std::vector<std::filesystem::path> Registrations::all() const {
  std::vector<std::filesystem::path> plists;
  std::ifstream in(file_);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty()) plists.emplace_back(line);
  }
  return plists;
}

bool Registrations::holds(const std::filesystem::path& plist) const { return std::ranges::count(all(), plist) > 0; }

std::optional<std::filesystem::path> Registrations::named(const std::string& plistName) const {
  const auto plists = all();
  const auto found = std::ranges::find_if(plists, [&](const auto& path) { return path.filename() == plistName; });
  return found == plists.end() ? std::nullopt : std::optional(*found);
}

bool Registrations::add(const std::filesystem::path& plist) const {
  if (holds(plist)) return true;
  auto plists = all();
  plists.push_back(plist);
  return write(plists);
}

bool Registrations::remove(const std::filesystem::path& plist) const {
  if (!holds(plist)) return true;
  auto plists = all();
  std::erase(plists, plist);
  return write(plists);
}

bool Registrations::write(const std::vector<std::filesystem::path>& plists) const {
  std::string text;
  for (const auto& plist : plists) text += plist.string() + '\n';
  return writeWhole(file_, text);
}

}  // namespace halvo::sim
