#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/LockedItem.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::UnorderedElementsAre;

struct FlagRow {
  const char* name;
  std::uint32_t flags;
};

class RemoveLockedTreeTest : public testing::Test, public testing::WithParamInterface<FlagRow> {
 protected:
  void SetUp() override {
    const LockedItem probe(directory_.makeFile("probe"), GetParam().flags);
    if (!probe.taken()) {
      GTEST_SKIP() << "this process cannot set the flag: on Linux that takes root of the machine itself and a file "
                      "system with immutable files and extended attributes, on a Mac root for the system's flags";
    }
    ASSERT_FALSE(RealPrivilegedFS().remove(directory_.path("probe"))) << "the flag does not protect";
  }

  LockedItem lock(const std::string& path) const { return {path, GetParam().flags}; }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
};

// ---- The flags of the item's owner

using RemoveUserLockedTreeTest = RemoveLockedTreeTest;

TEST_P(RemoveUserLockedTreeTest, AFileGoes) {
  const LockedItem file = lock(directory_.makeFile("tree/file"));

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
}

TEST_P(RemoveUserLockedTreeTest, AnEmptyDirectoryGoes) {
  const LockedItem empty = lock(directory_.makeDirectory("tree/empty"));

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
}

TEST_P(RemoveUserLockedTreeTest, ADirectoryGoesWithWhatIsInIt) {
  directory_.makeFile("tree/a");
  directory_.makeFifo("tree/fifo");
  directory_.makeFile("tree/inner/file");
  directory_.makeLink("tree/link", "/no/such/file");
  const LockedItem tree = lock(directory_.path("tree"));

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
}

TEST_P(RemoveUserLockedTreeTest, ABundleInWhichEverythingIsLockedGoes) {
  const LockedItem program = lock(directory_.makeFile("Halvo.app/Contents/MacOS/halvo-app"));
  const LockedItem text = lock(directory_.makeFile("Halvo.app/Contents/Info.plist"));
  const LockedItem programs = lock(directory_.path("Halvo.app/Contents/MacOS"));
  const LockedItem contents = lock(directory_.path("Halvo.app/Contents"));
  const LockedItem bundle = lock(directory_.path("Halvo.app"));

  EXPECT_TRUE(fs_.removeTree(directory_.path("Halvo.app")));

  EXPECT_FALSE(isNamed(directory_.path("Halvo.app")));
}

TEST_P(RemoveUserLockedTreeTest, TheDirectoryAboveKeepsItsLock) {
  directory_.makeFile("above/tree/file");
  const LockedItem above = lock(directory_.path("above"));

  EXPECT_FALSE(fs_.removeTree(directory_.path("above/tree")));

  EXPECT_EQ(above.flags(), GetParam().flags);
  EXPECT_THAT(fs_.entries(directory_.path("above")), UnorderedElementsAre("tree"));
}

TEST_P(RemoveUserLockedTreeTest, WhatALinkPointsToKeepsItsLock) {
  const LockedItem outside = lock(directory_.makeFile("outside"));
  directory_.makeLink("tree/link", directory_.path("outside"));
  const LockedItem tree = lock(directory_.path("tree"));

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_EQ(outside.flags(), GetParam().flags);
}

INSTANTIATE_TEST_SUITE_P(Table, RemoveUserLockedTreeTest,
                         testing::Values(FlagRow{"Immutable", UF_IMMUTABLE}, FlagRow{"AppendOnly", UF_APPEND},
                                         FlagRow{"Both", UF_IMMUTABLE | UF_APPEND}),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- The flags of the system

using RemoveSystemLockedTreeTest = RemoveLockedTreeTest;

TEST_P(RemoveSystemLockedTreeTest, AFileStaysAsItIsAndTheRestGoes) {
  directory_.makeFile("tree/a/file");
  directory_.makeFile("tree/b");
  const LockedItem kept = lock(directory_.makeFile("tree/m/kept"));
  directory_.makeFile("tree/m/z");
  directory_.makeFile("tree/y");
  directory_.makeFile("tree/z/file");

  EXPECT_FALSE(fs_.removeTree(directory_.path("tree")));

  EXPECT_EQ(kept.flags(), GetParam().flags);
  EXPECT_THAT(fs_.entries(directory_.path("tree")), UnorderedElementsAre("m"));
  EXPECT_THAT(fs_.entries(directory_.path("tree/m")), UnorderedElementsAre("kept"));
}

TEST_P(RemoveSystemLockedTreeTest, ADirectoryStaysWithWhatIsInIt) {
  directory_.makeFile("tree/beside");
  directory_.makeFile("tree/kept/file");
  const LockedItem kept = lock(directory_.path("tree/kept"));

  EXPECT_FALSE(fs_.removeTree(directory_.path("tree")));

  EXPECT_EQ(kept.flags(), GetParam().flags);
  EXPECT_THAT(fs_.entries(directory_.path("tree")), UnorderedElementsAre("kept"));
  EXPECT_THAT(fs_.entries(directory_.path("tree/kept")), UnorderedElementsAre("file"));
}

INSTANTIATE_TEST_SUITE_P(Table, RemoveSystemLockedTreeTest,
                         testing::Values(FlagRow{"Immutable", SF_IMMUTABLE}, FlagRow{"AppendOnly", SF_APPEND},
                                         FlagRow{"UsersAsWell", SF_IMMUTABLE | UF_IMMUTABLE},
                                         FlagRow{"UsersOtherAsWell", SF_APPEND | UF_IMMUTABLE}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
