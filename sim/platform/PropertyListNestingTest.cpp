#include "sim/platform/PropertyListNesting.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/contract/Repeated.h"

namespace halvo::sim {
namespace {

// A binary list of `arrays` empty arrays, all at the same place; what matters is how many objects the table names.
std::string binaryWithArrays(unsigned arrays) {
  std::string list = "bplist00\xA0";
  list += repeated("\x08", static_cast<int>(arrays));
  const auto number = [](unsigned value) {
    return std::string{0, 0, 0, 0, 0, 0, static_cast<char>(value >> 8U), static_cast<char>(value)};
  };
  return list + std::string(6, '\0') + "\x01\x01" + number(arrays) + number(0) + number(9);
}

TEST(PropertyListNestingTest, TenThousandContainersAreBearable) {
  EXPECT_FALSE(holdsTooManyContainers(repeated("<dict><array>", 5000)));
  EXPECT_FALSE(holdsTooManyContainers(binaryWithArrays(10'000)));
}

TEST(PropertyListNestingTest, OneMoreIsTooMany) {
  EXPECT_TRUE(holdsTooManyContainers(repeated("<dict><array>", 5000) + "<dict/>"));
  EXPECT_TRUE(holdsTooManyContainers(binaryWithArrays(10'001)));
}

TEST(PropertyListNestingTest, TableThatLiesOutsideTheFileIsLeftToTheLibrary) {
  EXPECT_FALSE(holdsTooManyContainers("bplist00" + std::string(32, '\xFF')));
  EXPECT_FALSE(holdsTooManyContainers("bplist00"));
}

}  // namespace
}  // namespace halvo::sim
