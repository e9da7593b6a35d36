#include "client/VisibleFaults.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "client/VisibleText.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

constexpr std::string_view kBundleName = "Halvo.app";
constexpr std::array<const char*, 3> kBundlePrograms = {"Contents/MacOS/halvo-helper", "Contents/MacOS/halvo-app",
                                                        "Contents/MacOS/halvo-daemon"};

// The last part of a path, whatever slashes end it.
std::string nameIn(const std::string& path) {
  return std::filesystem::path(path.substr(0, path.find_last_not_of('/') + 1)).filename().string();
}

bool isMissing(const std::error_code& error) {
  return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

bool certainlyHasNoProgram(const std::string& bundle) {
  return std::ranges::all_of(kBundlePrograms, [&](const char* program) {
    std::error_code error;
    const auto status = std::filesystem::status(std::filesystem::path(bundle) / program, error);
    return status.type() == std::filesystem::file_type::not_found;
  });
}

std::string faultOfName(const std::string& path) {
  if (!path.starts_with('/')) return "is not absolute: begin it with a slash.";
  if (path.find("..") != std::string::npos) return "holds \"..\": name the folder itself.";
  return nameIn(path) == kBundleName ? "" : "does not end with Halvo.app: name the application.";
}

std::string faultOfPlace(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::canonical(path, error);
  if (isMissing(error)) return "leads to nothing: check it.";
  if (!error && real.filename() != kBundleName) return "leads to something that is not called Halvo.app: check it.";
  return certainlyHasNoProgram(path) ? "leads to a folder that holds none of the product's programs: check it." : "";
}

}  // namespace

std::optional<std::string> faultOfPackage(const std::string& path) {
  constexpr off_t kLargest = off_t{256} * 1024 * 1024;
  const std::string package = "The package " + visibleText(path) + " ";
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) {
    const std::error_code error(errno, std::generic_category());
    if (!isMissing(error)) return std::nullopt;
    return package + "is not there: check the path.";
  }
  if (S_ISLNK(info.st_mode)) return package + "is a symbolic link: name the file itself.";
  if (!S_ISREG(info.st_mode)) return package + "is no regular file: check the path.";
  if (info.st_size > kLargest) return package + "is larger than 256 MiB, which no package of the maker is.";
  return std::nullopt;
}

std::optional<std::string> faultOfManifest(std::string_view text) {
  if (text.empty()) return "The manifest is empty: use the one that came with the package.";
  if (halvoReadJSONObject(text)) return std::nullopt;
  return "The manifest is no JSON object: use the one that came with the package.";
}

std::optional<std::string> faultOfBundle(const std::string& path) {
  std::string fault = faultOfName(path);
  if (fault.empty()) fault = faultOfPlace(path);
  if (fault.empty()) return std::nullopt;
  return "The path " + visibleText(path) + " " + fault;
}

bool namesVersion(std::string_view manifest) {
  const auto object = halvoReadJSONObject(manifest);
  if (!object) return false;
  const auto found = object->find("driver_version");
  return found != object->end() && std::holds_alternative<std::string>(found->second);
}

}  // namespace halvo
