#include "client/doctor/Disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class DiskTest : public testing::Test {
 protected:
  void makeFiles(int count) const {
    for (int i = 0; i < count; ++i) root.makeFile("folder/" + std::to_string(i), "1");
  }

  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(DiskTest, WhatIsNotThereIsAbsent) {
  EXPECT_EQ(disk.look("/nothing").sight, Sight::absent);
  EXPECT_EQ(disk.head("/nothing", "", 10).sight, Sight::absent);
  EXPECT_EQ(disk.head("/nothing", "Contents/Info.plist", 10).sight, Sight::absent);
  EXPECT_EQ(disk.tail("/nothing", 10).sight, Sight::absent);
  EXPECT_EQ(disk.names("/nothing", 10).sight, Sight::absent);
}

TEST_F(DiskTest, NothingIsBelowAFile) {
  root.makeFile("file");

  EXPECT_EQ(disk.look("/file/below").sight, Sight::absent);
  EXPECT_EQ(disk.head("/file/below", "", 10).sight, Sight::absent);
  EXPECT_EQ(disk.head("/file", "below", 10).sight, Sight::absent);
  EXPECT_EQ(disk.names("/file", 10).sight, Sight::absent);
}

TEST_F(DiskTest, WhatTheSystemDoesNotLookUpIsUnreadable) {
  const std::string longest = "/" + std::string(300, 'x');

  EXPECT_EQ(disk.look(longest).sight, Sight::unreadable);
  EXPECT_EQ(disk.head(longest, "", 10).sight, Sight::unreadable);
  EXPECT_EQ(disk.head(longest, "Contents/Info.plist", 10).sight, Sight::unreadable);
  EXPECT_EQ(disk.tail(longest, 10).sight, Sight::unreadable);
  EXPECT_EQ(disk.names(longest, 10).sight, Sight::unreadable);
}

TEST_F(DiskTest, AFileHasModeAndSize) {
  ASSERT_EQ(::chmod(root.makeFile("file", "12345").c_str(), 04755), 0);

  const Item item = disk.look("/file");

  EXPECT_EQ(item.sight, Sight::present);
  EXPECT_EQ(item.kind, ItemKind::file);
  EXPECT_EQ(item.mode, 04755U);
  EXPECT_EQ(item.bytes, 5);
}

// Where the test may, the numbers of user and group differ.
TEST_F(DiskTest, AnItemHasUserAndGroup) {
  const std::string path = root.makeFile("file");
  static_cast<void>(::chown(path.c_str(), 501, 20));
  struct stat info {};
  ASSERT_EQ(::lstat(path.c_str(), &info), 0);

  EXPECT_EQ(disk.look("/file").owner, info.st_uid);
  EXPECT_EQ(disk.look("/file").group, info.st_gid);
}

TEST_F(DiskTest, AnItemIsAsOldAsItsLastChange) {
  using namespace std::chrono;
  std::filesystem::last_write_time(root.makeFile("file"), std::filesystem::file_time_type::clock::now() - hours(50));

  EXPECT_EQ(duration_cast<hours>(disk.look("/file").age), hours(50));
}

TEST_F(DiskTest, KindsAreToldApartAndLinksNotFollowed) {
  root.makeDirectory("folder");
  root.makeLink("link", "folder");
  root.makeFifo("fifo");

  EXPECT_EQ(disk.look("/folder").kind, ItemKind::folder);
  EXPECT_EQ(disk.look("/link").kind, ItemKind::link);
  EXPECT_EQ(disk.look("/fifo").kind, ItemKind::other);
}

TEST_F(DiskTest, HeadAndTailAreBounded) {
  root.makeFile("file", "0123456789");

  EXPECT_EQ(disk.head("/file", "", 1).bytes, "0");
  EXPECT_EQ(disk.head("/file", "", 9).bytes, "012345678");
  EXPECT_EQ(disk.head("/file", "", 40).bytes, "0123456789");
  EXPECT_EQ(disk.tail("/file", 1).bytes, "9");
  EXPECT_EQ(disk.tail("/file", 9).bytes, "123456789");
  EXPECT_EQ(disk.tail("/file", 40).bytes, "0123456789");
}

TEST_F(DiskTest, AFileInAFolderIsRead) {
  root.makeFile("Halvo.driver/Contents/Info.plist", "list");

  const Contents contents = disk.head("/Halvo.driver", "Contents/Info.plist", 10);

  EXPECT_EQ(contents.sight, Sight::present);
  EXPECT_EQ(contents.bytes, "list");
}

TEST_F(DiskTest, ALinkIsThereAndNotRead) {
  root.makeFile("elsewhere", "secret");
  root.makeLink("link", "elsewhere");

  EXPECT_EQ(disk.head("/link", "", 10).sight, Sight::present);
  EXPECT_EQ(disk.head("/link", "", 10).bytes, "");
}

TEST_F(DiskTest, ALinkOnTheWayIsNotFollowed) {
  root.makeFile("elsewhere/Info.plist", "secret");
  root.makeLink("Halvo.driver/Contents", "../elsewhere");

  EXPECT_EQ(disk.head("/Halvo.driver", "Contents/Info.plist", 10).bytes, "");
}

TEST_F(DiskTest, AFifoIsNotWaitedFor) {
  root.makeFifo("fifo");

  EXPECT_EQ(disk.head("/fifo", "", 10).sight, Sight::present);
  EXPECT_EQ(disk.head("/fifo", "", 10).bytes, "");
}

TEST_F(DiskTest, NamesAreBounded) {
  root.makeFile("folder/a");
  root.makeFile("folder/.hidden");

  EXPECT_THAT(disk.names("/folder", 10).names, UnorderedElementsAre("a", ".hidden"));
  EXPECT_THAT(disk.names("/folder", 1).names, SizeIs(1));
}

TEST_F(DiskTest, ALinkToAFolderHasNoNames) {
  root.makeFile("folder/a");
  root.makeLink("link", "folder");

  EXPECT_THAT(disk.names("/link", 10).names, IsEmpty());
}

TEST_F(DiskTest, TheSizeIsThatOfTheFilesInAllFolders) {
  root.makeFile("folder/a", "123");
  root.makeFile("folder/b/c/d", "4567");
  root.makeFile("elsewhere", "89");
  root.makeLink("folder/link", "../elsewhere");

  EXPECT_EQ(disk.sizeOf("/folder").bytes, 7);
  EXPECT_TRUE(disk.sizeOf("/folder").isAll);
}

TEST_F(DiskTest, TheSizeOfATreeThatIsTooDeepSaysSo) {
  root.makeFile("folder/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/file", "shallow enough");
  EXPECT_TRUE(disk.sizeOf("/folder").isAll);

  root.makeFile("folder/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/file", "too deep");
  EXPECT_FALSE(disk.sizeOf("/folder").isAll);
  EXPECT_EQ(disk.sizeOf("/folder").bytes, 14);
}

TEST_F(DiskTest, TheSizeOfATreeThatIsTooLargeSaysSo) {
  makeFiles(10'000);

  EXPECT_FALSE(disk.sizeOf("/folder").isAll);
  EXPECT_EQ(disk.sizeOf("/folder").bytes, 9'999);

  std::filesystem::remove(root.path("folder/0"));
  EXPECT_TRUE(disk.sizeOf("/folder").isAll);
  EXPECT_EQ(disk.sizeOf("/folder").bytes, 9'999);
}

TEST_F(DiskTest, TheSizeOfWhatCannotBeLookedAtIsNotAll) { EXPECT_FALSE(disk.sizeOf("/nothing").isAll); }

}  // namespace
}  // namespace halvo
