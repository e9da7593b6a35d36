// What the Mac does with the encoded type of a value: an unreadable one and a read of another size raise an exception,
// where the package ends the process or reads on.
#import <Foundation/Foundation.h>

#include <algorithm>
#include <string_view>

namespace {

bool nameOfTypeReaches(std::string_view& type, char end) {
  const std::size_t at = type.find(end);
  type.remove_prefix(at == std::string_view::npos ? type.size() : at);
  return at != std::string_view::npos;
}

bool takeType(std::string_view& type);

// Members up to `close`, each perhaps behind its name in quotation marks.
bool takeMembers(std::string_view& type, char close) {
  while (!type.empty() && type.front() != close) {
    if (type.front() == '"') {
      type.remove_prefix(1);
      if (!nameOfTypeReaches(type, '"')) return false;
      type.remove_prefix(1);
    }
    if (!takeType(type)) return false;
  }
  if (type.empty()) return false;
  type.remove_prefix(1);
  return true;
}

// Takes one type off the front; false when there is none.
bool takeType(std::string_view& type) {
  if (type.empty()) return false;
  const char kind = type.front();
  type.remove_prefix(1);
  switch (kind) {
    case '{':
      if (!nameOfTypeReaches(type, '=')) return false;
      type.remove_prefix(1);
      return takeMembers(type, '}');
    case '[':
      type.remove_prefix(std::min(type.find_first_not_of("0123456789"), type.size()));
      return takeMembers(type, ']');
    case '^':
      return takeType(type);
    default:
      return std::string_view("cCsSiIlLqQfdB@#:*v?").find(kind) != std::string_view::npos;
  }
}

}  // namespace

#undef NSGetSizeAndAlignment

extern "C" const char* HalvoDoubleGetSizeAndAlignment(const char* type, NSUInteger* size, NSUInteger* alignment) {
  std::string_view rest = type;
  if (!takeType(rest)) [NSException raise:NSInvalidArgumentException format:@"unreadable type"];
  return NSGetSizeAndAlignment(type, size, alignment);
}

@implementation NSValue (HalvoBoundedRead)

- (void)getValue:(void*)value size:(NSUInteger)size {
  NSUInteger actual = 0;
  HalvoDoubleGetSizeAndAlignment(self.objCType, &actual, nullptr);
  if (actual != size) [NSException raise:NSInvalidArgumentException format:@"a value of another size"];
  [self getValue:value];
}

@end
