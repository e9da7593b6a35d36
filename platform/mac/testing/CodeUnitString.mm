#import "platform/mac/testing/CodeUnitString.h"

#include <utility>

@implementation HalvoCodeUnitString {
  std::vector<unichar> _units;
}

- (instancetype)initWithUnits:(std::vector<unichar>)units {
  self = [super init];
  if (self != nil) _units = std::move(units);
  return self;
}

- (NSUInteger)length {
  return _units.size();
}

- (unichar)characterAtIndex:(NSUInteger)index {
  return _units.at(index);
}

@end
