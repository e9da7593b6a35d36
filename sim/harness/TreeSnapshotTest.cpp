#include "sim/harness/TreeSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TreeSnapshotTest : public testing::Test {
 protected:
  TreeSnapshot snapshot() const {
    TreeSnapshot result;
    addToSnapshot(result, folder.path() / "tree", "/tree");
    return result;
  }

  const TemporaryDirectory folder;
};

TEST_F(TreeSnapshotTest, NothingThereIsEmpty) { EXPECT_THAT(snapshot(), IsEmpty()); }

TEST_F(TreeSnapshotTest, SeesAnotherModeAndOtherContentOfTheSameSize) {
  const auto a = folder.write("tree/a", "one");
  folder.write("tree/b", "one");
  folder.write("tree/c", "one");
  const auto before = snapshot();

  std::filesystem::permissions(a, std::filesystem::perms(0600));
  folder.write("tree/b", "two");

  EXPECT_THAT(changesBetween(before, snapshot()), ElementsAre(TreeChange{TreeChange::Kind::changed, "/tree/a"},
                                                              TreeChange{TreeChange::Kind::changed, "/tree/b"}));
}

TEST_F(TreeSnapshotTest, SeesAnotherOwnerTimeAndAttribute) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  const auto a = folder.write("tree/a", "one");
  const auto b = folder.write("tree/b", "one");
  const auto c = folder.write("tree/c", "one");
  const auto d = folder.write("tree/d", "one");
  const auto before = snapshot();

  ASSERT_EQ(::chown(a.c_str(), 501, 0), 0);
  ASSERT_EQ(::chown(b.c_str(), 0, 20), 0);
  std::filesystem::last_write_time(c, std::filesystem::last_write_time(c) + std::chrono::nanoseconds(1'000));
  ASSERT_EQ(::setxattr(d.c_str(), "trusted.note", "x", 1, 0), 0);

  EXPECT_THAT(
      changesBetween(before, snapshot()),
      ElementsAre(TreeChange{TreeChange::Kind::changed, "/tree/a"}, TreeChange{TreeChange::Kind::changed, "/tree/b"},
                  TreeChange{TreeChange::Kind::changed, "/tree/c"}, TreeChange{TreeChange::Kind::changed, "/tree/d"}));
}

TEST_F(TreeSnapshotTest, SeesALinkByItsTargetAndDoesNotFollowIt) {
  folder.write("elsewhere/x", "x");
  std::filesystem::create_directories(folder.path() / "tree");
  std::filesystem::create_symlink(folder.path() / "elsewhere", folder.path() / "tree/link");
  const auto before = snapshot();

  std::filesystem::remove(folder.path() / "tree/link");
  std::filesystem::create_symlink("other", folder.path() / "tree/link");

  EXPECT_THAT(changesBetween(before, snapshot()), ElementsAre(TreeChange{TreeChange::Kind::changed, "/tree/link"}));
}

TEST(TreeChangeTest, IsDescribedInWords) {
  EXPECT_EQ(describe(TreeChange{TreeChange::Kind::added, "/x"}), "added /x");
  EXPECT_EQ(describe(TreeChange{TreeChange::Kind::removed, "/x"}), "removed /x");
  EXPECT_EQ(describe(TreeChange{TreeChange::Kind::changed, "/x"}), "changed /x");
}

}  // namespace
}  // namespace halvo::sim
