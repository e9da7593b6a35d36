#include "HalvoHelper/system/PathStrings.h"

namespace halvo {
namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

}  // namespace

std::string halvoLastPathComponent(std::string_view path) {
  const std::string_view trimmed = withoutTrailingSlashes(path);
  if (trimmed.empty()) return path.empty() ? "" : "/";
  return std::string(trimmed.substr(trimmed.rfind('/') + 1));
}

std::string halvoDeletingLastPathComponent(std::string_view path) {
  std::string_view rest = withoutTrailingSlashes(path);
  rest = rest.substr(0, rest.rfind('/') + 1);
  rest = withoutTrailingSlashes(rest);
  if (rest.empty()) return path.starts_with('/') ? "/" : "";
  return std::string(rest);
}

std::string halvoAppendingPathComponent(std::string_view path, std::string_view component) {
  std::string joined;
  const std::string whole = path.empty() ? std::string(component) : std::string(path) + "/" + std::string(component);
  for (const char c : whole) {
    if (c != '/' || !joined.ends_with('/')) joined += c;
  }
  if (joined.size() > 1 && joined.ends_with('/')) joined.pop_back();
  return joined;
}

}  // namespace halvo
