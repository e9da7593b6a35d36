// What the doctor sees of a file that the disk does not give out, and what it leaves behind.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/doctor/Disk.h"
#include "client/testing/MemoryDisk.h"

namespace halvo {
namespace {

using testing::ElementsAre;

class DiskFaultTest : public testing::Test {
 protected:
  DiskFaultTest() {
    root.makeFile("file", "0123456789");
    root.makeFile("folder/below/file", "12345");
  }

  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(DiskFaultTest, AFileThatCannotBeReadIsUnreadableAndNothingOfItIsShown) {
  const SystemCallFault fault("pread", EIO, 2, 2);

  const Contents contents = disk.head("/file", "", 20);

  EXPECT_EQ(contents.sight, Sight::unreadable);
  EXPECT_EQ(contents.bytes, "");
}

TEST_F(DiskFaultTest, AFileOfWhichNothingCanBeToldIsUnreadable) {
  const SystemCallFault fault("fstat", EIO);

  EXPECT_EQ(disk.head("/file", "", 20).sight, Sight::unreadable);
}

TEST_F(DiskFaultTest, AFolderThatCannotBeListedIsUnreadable) {
  const SystemCallFault fault("fdopendir", ENOMEM);

  EXPECT_EQ(disk.names("/folder", 10).sight, Sight::unreadable);
}

TEST_F(DiskFaultTest, AnInterruptedReadIsMadeAgain) {
  const SystemCallFault fault("pread", EINTR);

  EXPECT_EQ(disk.head("/file", "", 4).bytes, "0123");
}

// A read may also give less than was asked for.
TEST_F(DiskFaultTest, WhatIsAppendedMeanwhileIsReadUpToTheSameBound) {
  const SystemCallHook append("pread", 2, [this] { root.makeFile("file", "0123456789abcdefghijklmnopqrstuvwxyz"); });

  EXPECT_EQ(disk.head("/file", "", 20).bytes, "0123456789abcdefghij");
}

// Opening a device may set it going, and a FIFO that is opened lets its writer go on.
TEST_F(DiskFaultTest, OnTheWayNothingButFoldersIsOpenedAndNoChildInheritsAny) {
  constexpr int kFile = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  constexpr int kFolder = kFile | O_DIRECTORY;
  const NotedOpenings openings;

  EXPECT_EQ(disk.head("/folder", "below/file", 10).bytes, "12345");

  EXPECT_THAT(openings.flags(), ElementsAre(kFolder, kFolder, kFile));
}

TEST_F(DiskFaultTest, NothingStaysOpen) {
  const std::vector<int> before = openDescriptors();

  static_cast<void>(disk.head("/folder", "below/file", 10));
  static_cast<void>(disk.names("/folder", 10));
  static_cast<void>(disk.sizeOf("/folder"));

  EXPECT_EQ(openDescriptors(), before);
}

// Another thread may have the number by then.
TEST_F(DiskFaultTest, AListedFolderIsNotClosedTwice) {
  const SystemCallFault closed("close", EIO, 0, 0);

  EXPECT_EQ(disk.names("/folder", 10).sight, Sight::present);

  EXPECT_EQ(closed.calls(), 0) << "the stream closes it";
}

struct SizeRow {
  const char* name;
  const char* function;
  int call;
};

class SizeFaultTest : public DiskFaultTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(SizeFaultTest, IsThenNotAll) {
  const SystemCallFault fault(GetParam().function, EACCES, GetParam().call, GetParam().call);

  const TreeSize size = disk.sizeOf("/folder");

  EXPECT_FALSE(size.isAll);
  EXPECT_EQ(size.bytes, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SizeFaultTest,
    testing::Values(SizeRow{"FolderNotLookedAt", "fstatat", 1}, SizeRow{"FolderBelowNotLookedAt", "fstatat", 2},
                    SizeRow{"FileNotLookedAt", "fstatat", 3}, SizeRow{"FolderNotOpened", "openat", 1},
                    SizeRow{"FolderBelowNotOpened", "openat", 3}, SizeRow{"FolderNotListed", "fdopendir", 1},
                    SizeRow{"FolderBelowNotListed", "fdopendir", 2}),
    [](const auto& row) { return std::string(row.param.name); });

// A file on a Mac's disk may claim to be as long as a number can be; on Linux only one in memory may everywhere.
class HugeFiles : public testing::Test {
 protected:
  static constexpr std::int64_t kLongest = std::numeric_limits<std::int64_t>::max();

  bool sizeIs(std::int64_t bytes, bool isAll) const {
    const TreeSize size = disk.sizeOf("/folder");
    return size.bytes == bytes && size.isAll == isAll;
  }

  // Ends the process: 0 where both sums are right, 1 where one is not, 2 without a disk.
  [[noreturn]] void look() const {
    if (!mountMemoryDisk(root.makeDirectory("folder"), "size=1m")) std::_Exit(2);
    root.makeSparseFile("folder/a", kLongest);
    const bool first = sizeIs(kLongest, true);
    root.makeSparseFile("folder/b", kLongest);
    std::_Exit(first && sizeIs(kLongest, false) ? 0 : 1);
  }

  const TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(HugeFiles, AreCountedAsFarAsANumberGoes) { EXPECT_EXIT(look(), testing::ExitedWithCode(0), ""); }

}  // namespace
}  // namespace halvo
