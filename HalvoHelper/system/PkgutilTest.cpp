#include "HalvoHelper/system/Pkgutil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;

TEST(PkgutilTest, ForgetsTheReceiptAndAnswersTheToolsStatus) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = 1, .output = "No receipt for 'com.halvo.pkg' found at '/'."}};

  EXPECT_EQ(Pkgutil(runner).forget("com.halvo.pkg"), 1);

  EXPECT_THAT(runner->runs, ElementsAre(ElementsAre("/usr/sbin/pkgutil", "--forget", "com.halvo.pkg")));
}

TEST(PkgutilTest, AToolThatCannotBeStartedAnswersMinusOne) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = -1, .output = "spawn failed: No such file or directory"}};

  EXPECT_EQ(Pkgutil(runner).forget("com.halvo.pkg"), -1);
}

}  // namespace
}  // namespace halvo
