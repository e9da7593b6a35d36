// Text between C++ and CoreFoundation.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "HalvoHelper/security/ScopedCF.h"

namespace halvo {

// A new string object; empty when `text` is not well-formed UTF-8.
[[nodiscard]] ScopedCF<CFStringRef> halvoCreateCFString(std::string_view text);

// The text of a string object; nothing when `value` is null or no string, or cannot be written as UTF-8.
[[nodiscard]] std::optional<std::string> halvoTextOf(CFTypeRef value);

}  // namespace halvo
