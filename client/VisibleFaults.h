// What is wrong with a request as far as this program can see: nobody is asked for a password for that.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvo {

// Each answers one sentence that also says what to do, or nothing where no fault can be seen. What this user may not
// look at counts as right: the helper can see more.

// A package has to be a regular file, no link, of at most 256 MiB.
[[nodiscard]] std::optional<std::string> faultOfPackage(const std::string& path);

// A manifest has to be a JSON object. One that names no version may go with a first install.
[[nodiscard]] std::optional<std::string> faultOfManifest(std::string_view text);

// The path of the application has to be absolute, without "..", called Halvo.app where it leads to as well, and hold
// one of the product's programs.
[[nodiscard]] std::optional<std::string> faultOfBundle(const std::string& path);

// Whether the manifest has a "driver_version" that is a text.
[[nodiscard]] bool namesVersion(std::string_view manifest);

}  // namespace halvo
