#import <Foundation/Foundation.h>

#include <string_view>

#include "platform/PropertyList.h"
#import "platform/mac/FoundationText.h"
#include "platform/mac/PropertyListContainers.h"

namespace halvo {
namespace {

PropertyListValue valueFrom(id value) {
  if ([value isKindOfClass:[NSString class]]) return textFromFoundation(value);
  return PropertyListOther{};
}

// Nil when there is none: readers raise on some malformed binary lists instead of answering an error.
id objectIn(NSData* data) {
  try {
    return [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:nil error:nil];
  } catch (...) {
    return nil;
  }
}

}  // namespace

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (holdsTooManyContainers(text)) return std::nullopt;
  @autoreleasepool {
    const id top = objectIn([NSData dataWithBytes:bytes.data() length:bytes.size()]);
    if (![top isKindOfClass:[NSDictionary class]]) return std::nullopt;
    PropertyList entries;
    auto* const dictionary = static_cast<NSDictionary*>(top);
    for (id key in dictionary) {
      if ([key isKindOfClass:[NSString class]]) {
        entries.insert_or_assign(textFromFoundation(key), valueFrom(dictionary[key]));
      }
    }
    return entries;
  }
}

}  // namespace halvo
