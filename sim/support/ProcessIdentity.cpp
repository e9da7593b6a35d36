#include "sim/support/ProcessIdentity.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace halvo::sim {
namespace {

constexpr int kStartTimeField = 22;
constexpr int kFirstFieldAfterName = 3;

}  // namespace

std::optional<std::uint32_t> processVersion(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  // The program's name stands in parentheses and may itself hold blanks and parentheses: count from the last one.
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;

  std::istringstream fields(text.substr(nameEnd + 1));
  std::string field;
  for (int number = kFirstFieldAfterName; number <= kStartTimeField; ++number) fields >> field;
  std::uint64_t startTime = 0;
  const auto parsed = std::from_chars(field.data(), field.data() + field.size(), startTime);
  if (!fields || parsed.ec != std::errc()) return std::nullopt;
  return static_cast<std::uint32_t>(startTime);
}

}  // namespace halvo::sim
