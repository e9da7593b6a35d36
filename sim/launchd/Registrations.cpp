#include "sim/launchd/Registrations.h"

#include <algorithm>
#include <fstream>
#include <utility>

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

bool Registrations::add(const std::filesystem::path& plist) const {
  auto plists = all();
  if (std::ranges::count(plists, plist) > 0) return true;
  plists.push_back(plist);
  return write(plists);
}

bool Registrations::remove(const std::filesystem::path& plist) const {
  auto plists = all();
  std::erase(plists, plist);
  return write(plists);
}

bool Registrations::write(const std::vector<std::filesystem::path>& plists) const {
  std::ofstream out(file_, std::ios::trunc);
  for (const auto& plist : plists) out << plist.string() << '\n';
  out.close();
  return static_cast<bool>(out);
}

}  // namespace halvo::sim
