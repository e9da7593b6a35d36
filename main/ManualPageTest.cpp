// The helper's manual page knows what the helper does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/testing/ManualPage.h"
#include "HalvoHelperXPC/Constants.h"
#include "main/OperationWiring.h"

namespace halvo {
namespace {

using testing::HasSubstr;

std::string manualPage() { return contentsOf(HALVO_HELPER_MANUAL_PAGE); }
std::string fileItem(const std::string& path) { return "Pa " + path; }

TEST(HelperManualPageTest, ListsEveryFileOfTheHelperAndNoOther) {
  const OperationFiles files;

  EXPECT_THAT(itemsOf(sectionOf(manualPage(), "FILES")),
              testing::ElementsAre(fileItem(kDriverBundlePath), fileItem(kBrokerPath), fileItem(kBrokerPlistPath),
                                   fileItem(kDaemonPlistPath), "Pa /var/db/halvo/install-staging",
                                   "Pa /var/db/halvo/install-rollback", fileItem(files.installLog),
                                   fileItem(files.uninstallLog)));
}

TEST(HelperManualPageTest, NamesTheServiceAndTheRight) {
  const std::string description = sectionOf(manualPage(), "DESCRIPTION");

  EXPECT_THAT(description, HasSubstr(".Dq " + std::string(kHalvoHelperMachService) + " .\n"));
  EXPECT_THAT(description, HasSubstr(".Dq " + std::string(kHalvoAdminRight) + "\n"));
}

TEST(HelperManualPageTest, ListsTheOneExitStatus) {
  EXPECT_THAT(itemsOf(sectionOf(manualPage(), "EXIT STATUS")), testing::ElementsAre("0"));
}

}  // namespace
}  // namespace halvo
