#include "transport/mac/UnavailableInitializer.h"

#include <gtest/gtest.h>

#import "transport/mac/ExportedHandler.h"
#import "transport/mac/XPCListenerDelegate.h"

namespace halvo {
namespace {

// Through `id`, which the compiler lets send what the class declares unavailable.
id initWithoutArguments(Class type) { return [static_cast<id>([type alloc]) init]; }

TEST(UnavailableInitializerDeathTest, AnExportedHandlerWithoutHandlerStopsTheProcess) {
  EXPECT_DEATH(initWithoutArguments([HalvoExportedHandler class]),
               "halvo-helper: use of unimplemented initializer 'init\\(\\)' for class 'HalvoExportedHandler'");
}

TEST(UnavailableInitializerDeathTest, AListenerDelegateWithoutDelegateStopsTheProcess) {
  EXPECT_DEATH(initWithoutArguments([HalvoListenerDelegate class]),
               "halvo-helper: use of unimplemented initializer 'init\\(\\)' for class 'HalvoListenerDelegate'");
}

}  // namespace
}  // namespace halvo
