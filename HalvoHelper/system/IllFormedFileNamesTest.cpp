// Names that are not UTF-8: a disk that was written elsewhere may hold them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::ElementsAre;

TEST(IllFormedFileNamesTest, AreGivenAsTheyAre) {
  const TemporaryDirectory directory;
  directory.makeFile("\xC3\xA9\xFF");

  EXPECT_THAT(RealPrivilegedFS().entries(directory.path()), ElementsAre("\xC3\xA9\xFF"));
}

}  // namespace
}  // namespace halvo
