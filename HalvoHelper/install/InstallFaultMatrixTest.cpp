// Installs in which every call to the file system and to a tool fails, and the helper is killed there: in memory.
#include "HalvoHelper/testing/FaultMatrixTest.h"

namespace halvo {
namespace {

using InstallFaultMatrixTest = FaultMatrixTest;

TEST_P(InstallFaultMatrixTest, WithoutAFaultAllIsAsPromised) {
  EXPECT_THAT(breachesOf(halvoRunInMemory(road(), {})), testing::IsEmpty());
}

TEST_P(InstallFaultMatrixTest, EachFaultAloneLeavesWhatIsPromised) {
  EXPECT_THAT(breachesOfAll(singleFaults(road())), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Roads, InstallFaultMatrixTest, testing::ValuesIn(roadsOf(Road::Request::install)), roadName);

using InstallFaultPairsTest = FaultMatrixTest;

TEST_P(InstallFaultPairsTest, TwoFaultsTogetherLeaveWhatIsPromised) {
  EXPECT_THAT(breachesOfAll(pairsOfFaults(road())), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Roads, InstallFaultPairsTest, testing::ValuesIn(pairedRoadsOf(Road::Request::install)),
                         roadName);

}  // namespace
}  // namespace halvo
