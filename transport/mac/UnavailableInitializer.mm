#include "transport/mac/UnavailableInitializer.h"

#include <cstdlib>

#include "platform/SystemLog.h"
#import "platform/mac/FoundationText.h"

namespace halvo {

void stopAtUnavailableInitializer(Class type) {
  halvoSystemLog("halvo-helper: use of unimplemented initializer 'init()' for class '" +
                 textFromFoundation(NSStringFromClass(type)) + "'");
  std::abort();
}

}  // namespace halvo
