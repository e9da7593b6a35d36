#include "HalvoHelper/removal/UninstallResult.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

TEST(UninstallResultTest, OkNamesTheApplicationBundle) {
  EXPECT_EQ(halvoUninstallResultJSON(UninstallOk{"/Applications/Halvo.app"}),
            R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})");
}

TEST(UninstallResultTest, IncompleteNamesTheLog) {
  EXPECT_EQ(halvoUninstallResultJSON(UninstallIncomplete{"/var/log/halvo-uninstall.log"}),
            R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})");
}

TEST(UninstallResultTest, AudioActiveCarriesNothing) {
  EXPECT_EQ(halvoUninstallResultJSON(UninstallAudioActive{}), R"({"code":"audio_active"})");
}

TEST(UninstallResultTest, AnEmptyPathKeepsItsMember) {
  EXPECT_EQ(halvoUninstallResultJSON(UninstallOk{""}), R"({"code":"ok","gui_app_path":""})");
  EXPECT_EQ(halvoUninstallResultJSON(UninstallIncomplete{""}), R"({"code":"incomplete","log_path":""})");
}

TEST(UninstallResultTest, PathsAreNotEscaped) {
  EXPECT_EQ(halvoUninstallResultJSON(UninstallOk{"/a\"b\\"}), "{\"code\":\"ok\",\"gui_app_path\":\"/a\"b\\\"}");
}

TEST(UninstallResultTest, EqualityLooksAtOutcomeAndPath) {
  EXPECT_EQ(UninstallResult(UninstallOk{"/x"}), UninstallResult(UninstallOk{"/x"}));
  EXPECT_NE(UninstallResult(UninstallOk{"/x"}), UninstallResult(UninstallOk{"/y"}));
  EXPECT_NE(UninstallResult(UninstallOk{"/x"}), UninstallResult(UninstallIncomplete{"/x"}));
}

}  // namespace
}  // namespace halvo
