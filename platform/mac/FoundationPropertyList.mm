#import <Foundation/Foundation.h>

#include <string_view>
#include <utility>

#include "platform/PropertyList.h"
#import "platform/mac/FoundationText.h"
#include "platform/mac/PropertyListContainers.h"
#include "platform/mac/PropertyListXML.h"

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

bool isReadable(std::string_view list) {
  const std::string utf8 = utf8OfPropertyList(list);
  return !holdsTooManyContainers(utf8) && !isLaxPropertyListXML(utf8);
}

}  // namespace

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  if (!isReadable({reinterpret_cast<const char*>(bytes.data()), bytes.size()})) return std::nullopt;
  @autoreleasepool {
    const id top = objectIn([NSData dataWithBytes:bytes.data() length:bytes.size()]);
    if (![top isKindOfClass:[NSDictionary class]]) return std::nullopt;
    PropertyList entries;
    std::size_t texts = 0;
    auto* const dictionary = static_cast<NSDictionary*>(top);
    for (id key in dictionary) {
      if (![key isKindOfClass:[NSString class]]) return std::nullopt;
      std::string name = textFromFoundation(key);
      PropertyListValue value = valueFrom(dictionary[key]);
      const auto* const text = std::get_if<std::string>(&value);
      texts += name.size() + (text == nullptr ? 0 : text->size());
      if (texts > 2 * bytes.size() + kMostRepeatedPropertyListText) return std::nullopt;
      entries.insert_or_assign(std::move(name), std::move(value));
    }
    return entries;
  }
}

}  // namespace halvo
