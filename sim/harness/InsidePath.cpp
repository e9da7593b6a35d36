#include "sim/harness/InsidePath.h"

#include <deque>
#include <string>
#include <system_error>

namespace halvo::sim {
namespace {

constexpr int kMostLinks = 40;

std::deque<std::string> partsOf(const std::filesystem::path& path) {
  std::deque<std::string> parts;
  for (const auto& part : path.relative_path()) {
    if (!part.empty() && part != ".") parts.push_back(part.string());
  }
  return parts;
}

}  // namespace

std::filesystem::path hostPath(const std::filesystem::path& root, std::string_view inside, LastPart lastPart) {
  std::deque<std::string> left = partsOf(inside);
  std::filesystem::path reached;  // below the root
  int links = 0;
  while (!left.empty()) {
    const std::string part = left.front();
    left.pop_front();
    if (part == "..") {
      reached = reached.parent_path();
      continue;
    }
    std::error_code error;
    const auto target = std::filesystem::read_symlink(root / reached / part, error);
    if (error || (left.empty() && lastPart == LastPart::kept) || ++links > kMostLinks) {
      reached /= part;
      continue;
    }
    if (target.is_absolute()) reached.clear();
    const auto parts = partsOf(target);
    left.insert(left.begin(), parts.begin(), parts.end());
  }
  return root / reached;
}

}  // namespace halvo::sim
