#include "client/LocalView.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/testing/MemoryDisk.h"

namespace halvo {
namespace {

class LocalViewTest : public testing::Test {
 protected:
  TemporaryDirectory root;
  const LocalView view{root.path()};
};

TEST_F(LocalViewTest, OnAnEmptyMacThereIsNothing) {
  EXPECT_FALSE(view.productIsInstalled());
  EXPECT_FALSE(view.stagingIsLeft());
}

class AnyPart : public LocalViewTest, public testing::WithParamInterface<const char*> {};

TEST_P(AnyPart, IsTheProduct) {
  root.makeDirectory(GetParam());

  EXPECT_TRUE(view.productIsInstalled());
}

INSTANTIATE_TEST_SUITE_P(Table, AnyPart,
                         testing::Values("Library/Audio/Plug-Ins/HAL/Halvo.driver",
                                         "Library/PrivilegedHelperTools/halvo-broker",
                                         "Library/LaunchDaemons/com.halvo.broker.plist",
                                         "Library/LaunchAgents/com.halvo.daemon.plist"));

TEST_F(LocalViewTest, AStagingDirectoryIsSeen) {
  root.makeDirectory("var/db/halvo/install-staging");

  EXPECT_TRUE(view.stagingIsLeft());
}

TEST_F(LocalViewTest, ADiskWithRoomIsNotFull) {
  root.makeDirectory("var/db");

  EXPECT_FALSE(view.diskIsFull());
}

TEST_F(LocalViewTest, ADiskThatCannotBeLookedAtIsNotFull) { EXPECT_FALSE(view.diskIsFull()); }

// A file system that never has room.
TEST_F(LocalViewTest, ADiskWithoutRoomIsFull) {
  root.makeDirectory("var");
  root.makeLink("var/db", "/proc");

  EXPECT_TRUE(view.diskIsFull());
}

struct SizeRow {
  const char* name;
  const char* options;
  int isFull;
};

class EmptyDisk : public LocalViewTest, public testing::WithParamInterface<SizeRow> {
 protected:
  // Ends the process, whose mounts nobody else sees: 1 where the disk counts as full, 0 where not, 2 without a disk.
  [[noreturn]] void lookAtDisk() const {
    const std::string place = root.makeDirectory("var/db");
    const bool isThere = mountMemoryDisk(place, GetParam().options);
    std::_Exit(isThere ? static_cast<int>(view.diskIsFull()) : 2);
  }
};

TEST_P(EmptyDisk, IsFullWhereItHoldsLessThanAMebibyte) {
  EXPECT_EXIT(lookAtDisk(), testing::ExitedWithCode(GetParam().isFull), "");
}

INSTANTIATE_TEST_SUITE_P(Table, EmptyDisk,
                         testing::Values(SizeRow{"OfOneMebibyte", "size=1048576", 0},
                                         SizeRow{"OnePageSmaller", "size=1044480", 1}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
