#include "main/InstalledDriver.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <span>
#include <utility>

#include "HalvoHelper/system/ProductPaths.h"
#include "platform/PropertyList.h"

namespace halvo {
namespace {

std::optional<std::string> contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes;
  std::array<char, 4096> chunk{};
  // Through read(), which reports a failure as a state: stream iterators throw when a directory was opened.
  while (file.read(chunk.data(), chunk.size()) || file.gcount() > 0) {
    bytes.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
  }
  return file.bad() ? std::nullopt : std::optional(std::move(bytes));
}

}  // namespace

std::optional<std::string> halvoInstalledDriverVersion() {
  return halvoDriverVersionIn(std::string(kDriverBundlePath) + "/Contents/Info.plist");
}

std::optional<std::string> halvoDriverVersionIn(const std::string& infoPlistPath) {
  const auto bytes = contentsOf(infoPlistPath);
  if (!bytes) return std::nullopt;
  const auto plist = halvoReadPropertyList(std::as_bytes(std::span(*bytes)));
  if (!plist) return std::nullopt;
  const auto found = plist->find("CFBundleVersion");
  if (found == plist->end()) return std::nullopt;
  const auto* version = std::get_if<std::string>(&found->second);
  return version == nullptr ? std::nullopt : std::optional(*version);
}

}  // namespace halvo
