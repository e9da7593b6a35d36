#include "platform/mac/UnavailableInitializer.h"

#include <cstdlib>

namespace halvo {

void stopAtUnavailableInitializer(Class type) {
  NSLog(@"halvo-helper: use of unimplemented initializer 'init()' for class '%@'", NSStringFromClass(type));
  std::abort();
}

}  // namespace halvo
