#include "client/doctor/Disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST_F(DiskTest, AFileHasModeAndSize) {
  ASSERT_EQ(::chmod(root.makeFile("file", "12345").c_str(), 0640), 0);

  const Item item = disk.look("/file");

  EXPECT_EQ(item.sight, Sight::present);
  EXPECT_EQ(item.kind, ItemKind::file);
  EXPECT_EQ(item.mode, 0640U);
  EXPECT_EQ(item.bytes, 5);
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

  EXPECT_EQ(disk.head("/file", "", 4).bytes, "0123");
  EXPECT_EQ(disk.tail("/file", 4).bytes, "6789");
  EXPECT_EQ(disk.tail("/file", 40).bytes, "0123456789");
}

TEST_F(DiskTest, AFileInAFolderIsRead) {
  root.makeFile("Halvo.driver/Contents/Info.plist", "list");

  const Contents contents = disk.head("/Halvo.driver", "Contents/Info.plist", 10);

  EXPECT_EQ(contents.sight, Sight::present);
  EXPECT_TRUE(contents.isFile);
  EXPECT_EQ(contents.bytes, "list");
}

TEST_F(DiskTest, ALinkIsNoFile) {
  root.makeFile("elsewhere", "secret");
  root.makeLink("link", "elsewhere");

  EXPECT_EQ(disk.head("/link", "", 10).sight, Sight::present);
  EXPECT_FALSE(disk.head("/link", "", 10).isFile);
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
  EXPECT_FALSE(disk.head("/fifo", "", 10).isFile);
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

  root.makeFile("folder/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/file", "too deep");
  EXPECT_FALSE(disk.sizeOf("/folder").isAll);
  EXPECT_EQ(disk.sizeOf("/folder").bytes, 14);
}

TEST_F(DiskTest, TheSizeOfATreeThatIsTooLargeSaysSo) {
  makeFiles(10'000);

  EXPECT_FALSE(disk.sizeOf("/folder").isAll);
  EXPECT_EQ(disk.sizeOf("/folder").bytes, 9'999);
}

}  // namespace
}  // namespace halvo
