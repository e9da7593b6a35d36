#include "client/ProtectedFolders.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace halvo {
namespace {

// Where the volume with everybody's data shows a second time.
constexpr std::string_view kData = "/system/volumes/data/";
constexpr std::array<std::string_view, 3> kKept = {"downloads", "desktop", "documents"};

// Whatever the locale.
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lower(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), [](char c) { return lower(c); });
  return result;
}

// Takes the first name off a path that begins with a slash.
std::string_view takeName(std::string_view& path) {
  path.remove_prefix(std::min<std::size_t>(path.size(), 1));
  const std::string_view name = path.substr(0, path.find('/'));
  path.remove_prefix(name.size());
  return name;
}

}  // namespace

bool isKeptFromDaemons(std::string_view realPath) {
  const std::string path = lower(realPath);
  std::string_view rest = path;
  if (rest.starts_with(kData)) rest.remove_prefix(kData.size() - 1);
  const std::string_view top = takeName(rest);
  const std::string_view second = takeName(rest);
  if (top == "volumes" || top == "network") return !second.empty();
  return top == "users" && std::ranges::find(kKept, takeName(rest)) != kKept.end();
}

bool liesWhereDaemonsMayNotRead(const std::string& path) {
  std::error_code error;
  const auto folder = std::filesystem::absolute(path, error).parent_path();
  // Before any ".." is taken out of the text: behind a link it leads elsewhere.
  const auto real = std::filesystem::canonical(folder, error);
  return isKeptFromDaemons((error ? folder.lexically_normal() : real).string());
}

}  // namespace halvo
