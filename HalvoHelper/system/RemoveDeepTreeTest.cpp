#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/DeepTree.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::IsEmpty;

// The process may have that many descriptors more than it has now.
class DescriptorAllowance {
 public:
  explicit DescriptorAllowance(rlim_t more) {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit allowed{static_cast<rlim_t>(openDescriptors().back()) + 1 + more, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &allowed);
  }
  DescriptorAllowance(const DescriptorAllowance&) = delete;
  DescriptorAllowance& operator=(const DescriptorAllowance&) = delete;
  ~DescriptorAllowance() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

class RemoveDeepTreeTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
};

struct DepthRow {
  const char* name;
  int levels;
};

// Shallow trees, the depths around which directories on the way down are closed, and one that no stack holds.
class RemoveTreeOfDepth : public RemoveDeepTreeTest, public testing::WithParamInterface<DepthRow> {};

TEST_P(RemoveTreeOfDepth, GoesWithFewDescriptorsAndASmallStack) {
  const std::string tree = directory_.makeDirectory("tree");
  makeChain(tree, "level", GetParam().levels);
  const DescriptorAllowance few(20);

  EXPECT_TRUE(onSmallStack([&] { return fs_.removeTree(tree); }));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, RemoveTreeOfDepth,
                         testing::Values(DepthRow{"One", 1}, DepthRow{"Fourteen", 14}, DepthRow{"Fifteen", 15},
                                         DepthRow{"Sixteen", 16}, DepthRow{"Seventeen", 17}, DepthRow{"Forty", 40},
                                         DepthRow{"FiveThousand", 5'000}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(RemoveDeepTreeTest, PathsInsideMayBeLongerThanTheSystemTakes) {
  const std::string tree = directory_.makeDirectory("tree");
  makeChain(tree, std::string(200, 'n'), 100);

  EXPECT_TRUE(fs_.removeTree(tree));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

TEST_F(RemoveDeepTreeTest, WhatLiesBesideTheWayDownGoesToo) {
  const std::string tree = directory_.makeDirectory("tree");
  makeChain(tree, "a", 40);
  makeChain(tree, "m", 40);
  makeChain(directory_.path("tree/m/m/m"), "b", 40);
  makeChain(directory_.path("tree/m/m/m"), "z", 40);

  EXPECT_TRUE(fs_.removeTree(tree));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

TEST_F(RemoveDeepTreeTest, NoDescriptorStaysOpen) {
  const std::string tree = directory_.makeDirectory("tree");
  makeChain(tree, "level", 100);
  const std::vector<int> before = openDescriptors();

  EXPECT_TRUE(fs_.removeTree(tree));

  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace halvo
