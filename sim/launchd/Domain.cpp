#include "sim/launchd/Domain.h"

#include <algorithm>
#include <charconv>
#include <fstream>

namespace halvo::sim {
namespace {

constexpr std::string_view kSystem = "system";
constexpr std::string_view kGui = "gui/";

std::optional<uid_t> parseUid(std::string_view text) {
  uid_t uid = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), uid);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return uid;
}

}  // namespace

std::optional<JobTarget> parseJobTarget(std::string_view text) {
  const std::size_t kind = text.starts_with(kGui) ? kGui.size() : 0;
  const std::size_t slash = text.find('/', kind);
  const std::string_view domain = text.substr(0, slash);
  if (kind == 0 ? domain != kSystem : !parseUid(domain.substr(kind))) return std::nullopt;
  const std::string_view label = slash == std::string_view::npos ? "" : text.substr(slash + 1);
  return JobTarget{std::string(domain), std::string(label)};
}

std::vector<uid_t> guiSessions(const std::filesystem::path& sessions) {
  std::vector<uid_t> users;
  std::ifstream file(sessions);
  for (std::string line; std::getline(file, line);) {
    if (const auto uid = parseUid(line)) users.push_back(*uid);
  }
  return users;
}

bool domainExists(const std::string& domain, const std::filesystem::path& sessions) {
  return domain == kSystem || std::ranges::count(guiSessions(sessions), domainUser(domain)) > 0;
}

std::string guiDomain(uid_t user) { return std::string(kGui) + std::to_string(user); }

uid_t domainUser(const std::string& domain) {
  if (domain == kSystem) return 0;
  return parseUid(std::string_view(domain).substr(kGui.size())).value_or(0);
}

}  // namespace halvo::sim
