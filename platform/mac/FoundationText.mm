#include "platform/mac/FoundationText.h"

#include <cstdint>
#include <type_traits>

#include "platform/mac/UnicodeText.h"

namespace halvo {

static_assert(std::is_same_v<unichar, std::uint16_t>);

std::string textFromFoundation(id value) {
  if (![value isKindOfClass:[NSString class]]) return {};
  auto* const text = static_cast<NSString*>(value);
  // Not UTF8String, which ends at the first NUL and is nil for an unpaired surrogate.
  std::vector<std::uint16_t> units(text.length);
  [text getCharacters:units.data() range:NSMakeRange(0, units.size())];
  return utf8FromUTF16(units);
}

std::vector<std::byte> bytesFromFoundation(id value) {
  if (![value isKindOfClass:[NSData class]]) return {};
  auto* const data = static_cast<NSData*>(value);
  const auto* const first = static_cast<const std::byte*>(data.bytes);
  return {first, first + data.length};
}

NSString* foundationText(std::string_view utf8) {
  const std::vector<std::uint16_t> units = utf16FromUTF8(utf8);
  return [[NSString alloc] initWithCharacters:units.data() length:units.size()];
}

}  // namespace halvo
