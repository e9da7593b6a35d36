// Removals in which every call to the file system and to a tool fails, and the helper is killed there: in memory.
#include "HalvoHelper/testing/FaultMatrixTest.h"

namespace halvo {
namespace {

using UninstallFaultMatrixTest = FaultMatrixTest;

TEST_P(UninstallFaultMatrixTest, WithoutAFaultAllIsAsPromised) {
  EXPECT_THAT(breachesOf(halvoRunInMemory(road(), {})), testing::IsEmpty());
}

TEST_P(UninstallFaultMatrixTest, EachFaultAloneLeavesWhatIsPromised) {
  EXPECT_THAT(breachesOfAll(singleFaults(road())), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Roads, UninstallFaultMatrixTest, testing::ValuesIn(roadsOf(Road::Request::uninstall)),
                         roadName);

using UninstallFaultPairsTest = FaultMatrixTest;

TEST_P(UninstallFaultPairsTest, TwoFaultsTogetherLeaveWhatIsPromised) {
  EXPECT_THAT(breachesOfAll(pairsOfFaults(road())), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Roads, UninstallFaultPairsTest, testing::ValuesIn(pairedRoadsOf(Road::Request::uninstall)),
                         roadName);

}  // namespace
}  // namespace halvo
