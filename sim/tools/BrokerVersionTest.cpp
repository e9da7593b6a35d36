#include "sim/tools/BrokerVersion.h"

#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

TEST(BrokerVersionTest, AVersionIsReadBack) {
  EXPECT_EQ(brokerVersion(withBrokerVersion("program", "1.2.0 (beta)")), "1.2.0 (beta)");
}

TEST(BrokerVersionTest, TheProgramStaysInFront) {
  EXPECT_EQ(withBrokerVersion("program", "1.2.0").substr(0, 7), "program");
}

TEST(BrokerVersionTest, AnEmptyVersionIsAVersion) { EXPECT_EQ(brokerVersion(withBrokerVersion("p", "")), ""); }

TEST(BrokerVersionTest, AProgramWithoutOneHasNone) {
  EXPECT_EQ(brokerVersion("a program of some length, no more"), std::nullopt);
}

TEST(BrokerVersionTest, AnEmptyProgramHasNone) { EXPECT_EQ(brokerVersion(""), std::nullopt); }

TEST(BrokerVersionTest, ALengthBeyondTheFileIsNone) {
  EXPECT_EQ(brokerVersion("00000009halvo-broker-version"), std::nullopt);
}

TEST(BrokerVersionTest, ALengthThatIsNoNumberIsNone) {
  EXPECT_EQ(brokerVersion("1.20000000xhalvo-broker-version"), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
