// How copyTree() asks the system for a copy.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CopyTreeCallsTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
  sim::FrameworkProbe probe_;
  std::string copy_ = directory_.path("copy");
};

// All of its metadata, as a tree, following no link, over nothing that is there, sharing blocks where that is possible.
TEST_F(CopyTreeCallsTest, OneExclusiveRecursiveCloneWithAllMetadataThatFollowsNoLink) {
  const std::string source = directory_.makeFile("source");

  ASSERT_TRUE(fs_.copyTree(source, copy_));

  EXPECT_THAT(probe_.calls(), ElementsAre("copyfile from=" + source + " to=" + copy_ + " flags=0x10e800f"));
}

TEST_F(CopyTreeCallsTest, WhatTheSystemDoesNotCopyIsNotCopied) {
  probe_.failNext("copyfile", ENOSPC);

  EXPECT_FALSE(fs_.copyTree(directory_.makeFile("source"), copy_));

  EXPECT_FALSE(isNamed(copy_));
}

TEST_F(CopyTreeCallsTest, NothingIsCopiedOverAnythingThatIsStillThere) {
  const std::string dangling = directory_.makeLink("dangling", directory_.path("absent"));

  EXPECT_FALSE(fs_.copyTree(directory_.makeFile("source"), dangling));

  EXPECT_THAT(probe_.calls(), IsEmpty());
}

}  // namespace
}  // namespace halvo
