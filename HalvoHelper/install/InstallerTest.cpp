#include "HalvoHelper/install/Installer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;

TEST(InstallerTest, InstallsOntoTheRunningSystemWithFourArguments) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();

  EXPECT_EQ(Installer(runner).installPkg("/staging/incoming.pkg"), 0);

  EXPECT_THAT(runner->runs,
              ElementsAre(ElementsAre("/usr/sbin/installer", "-pkg", "/staging/incoming.pkg", "-target", "/")));
}

TEST(InstallerTest, AnswersTheInstallersOwnStatus) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = 1, .output = "installer: Error"}, {.code = -1, .output = "spawn failed: x"}};

  EXPECT_EQ(Installer(runner).installPkg("/staging/incoming.pkg"), 1);
  EXPECT_EQ(Installer(runner).installPkg("/staging/incoming.pkg"), -1);
}

}  // namespace
}  // namespace halvo
