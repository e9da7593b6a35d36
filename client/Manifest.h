// Reads the manifest that goes with a package.
#pragma once

#include <string>
#include <variant>

namespace halvo {

// Why a manifest could not be read, as a sentence that also says what to do.
struct UnreadableManifest {
  std::string reason;
  bool operator==(const UnreadableManifest&) const = default;
};

// The whole file as it is; whether it is a manifest, the helper judges. Refuses what is no regular file, what is larger
// than a mebibyte, which no manifest is, and what changes while it is read.
[[nodiscard]] std::variant<std::string, UnreadableManifest> readManifest(const std::string& path);

}  // namespace halvo
