#include "HalvoHelperXPC/Version.h"

#include <gtest/gtest.h>

#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

// An application asks find_package() for the protocol that it speaks by the first number of the version.
TEST(VersionTest, BeginsWithTheProtocolsNumber) {
  EXPECT_EQ(kHalvoHelperXPCVersion, 6);
  EXPECT_TRUE(kHalvoVersion.starts_with("6.")) << kHalvoVersion;
}

}  // namespace
}  // namespace halvo
