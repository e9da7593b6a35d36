#import <Foundation/Foundation.h>

#include "platform/JSONObject.h"
#import "platform/mac/FoundationText.h"
#include "platform/mac/JSONExactNumbers.h"
#include "platform/mac/JSONNesting.h"
#include "platform/mac/UnicodeText.h"

namespace halvo {
namespace {

JSONValue numberFrom(NSNumber* number) {
  // A boolean is a number here, and an equal one; only its class tells.
  if ([number isKindOfClass:[@YES class]]) return static_cast<bool>(number.boolValue);
  const std::int64_t integer = number.longLongValue;
  if (![number isEqualToNumber:@(integer)]) return JSONOther{};
  return integer;
}

JSONValue valueFrom(id value) {
  if ([value isKindOfClass:[NSString class]]) return textFromFoundation(value);
  if ([value isKindOfClass:[NSNumber class]]) return numberFrom(static_cast<NSNumber*>(value));
  return JSONOther{};
}

// The reader guesses at the encoding: NULs make it UTF-16 or UTF-32 to it, and nobody knows what ill-formed UTF-8 does.
bool isPlainText(std::string_view text) { return text.find('\0') == std::string_view::npos && isWellFormedUTF8(text); }

// Nil when there is none: what a reader raises on means the same as an error.
id objectIn(NSData* data) {
  try {
    return [NSJSONSerialization JSONObjectWithData:data options:0 error:nil];
  } catch (...) {
    return nil;
  }
}

}  // namespace

std::optional<JSONObject> halvoReadJSONObject(std::string_view text) {
  if (text.empty() || !isPlainText(text) || jsonNestsTooDeep(text)) return std::nullopt;
  @autoreleasepool {
    const std::string exact = withExactNumbers(text);
    const id top = objectIn([NSData dataWithBytes:exact.data() length:exact.size()]);
    if (![top isKindOfClass:[NSDictionary class]]) return std::nullopt;
    JSONObject object;
    auto* const members = static_cast<NSDictionary*>(top);
    for (id key in members) object.insert_or_assign(textFromFoundation(key), valueFrom(members[key]));
    return object;
  }
}

}  // namespace halvo
