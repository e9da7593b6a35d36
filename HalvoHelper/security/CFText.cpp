#include "HalvoHelper/security/CFText.h"

#include <cstddef>

namespace halvo {

ScopedCF<CFStringRef> halvoCreateCFString(std::string_view text) {
  return ScopedCF<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                       static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, 0));
}

std::optional<std::string> halvoTextOf(CFTypeRef value) {
  // The type is tested before the cast: string functions do not survive an object of another type.
  if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return std::nullopt;
  const auto string = static_cast<CFStringRef>(value);
  const CFRange all = CFRangeMake(0, CFStringGetLength(string));
  CFIndex size = 0;
  if (CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, 0, nullptr, 0, &size) != all.length) return std::nullopt;
  std::string text(static_cast<std::size_t>(size), '\0');
  CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, 0, reinterpret_cast<UInt8*>(text.data()), size, &size);
  return text;
}

}  // namespace halvo
