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

// The whole manifest as it is; whether it is one, the helper judges. "-" is standard input, which is read to its end,
// as a FIFO is. Refuses what is neither that nor a regular file, what is larger than a mebibyte, which no manifest is,
// and a file that changes while it is read.
[[nodiscard]] std::variant<std::string, UnreadableManifest> readManifest(const std::string& path);

}  // namespace halvo
