// What the real file system makes of system calls that fail, and of what others do between two of them.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <vector>

#include "HalvoHelper/system/BoundedCopy.h"
#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kForEver = 1'000'000;

class PrivilegedFSFaultTest : public testing::Test {
 protected:
  std::string makeBundle() const {
    directory_.makeFile("Halvo.driver/Contents/Info.plist", "info");
    directory_.makeFile("Halvo.driver/Contents/MacOS/Halvo", "code");
    return directory_.path("Halvo.driver");
  }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
  std::string copy_ = directory_.path("copy");
};

TEST_F(PrivilegedFSFaultTest, AFileThatSomebodyElseRemovesFirstCountsAsRemoved) {
  const SystemCallFault fault("unlink", ENOENT);

  EXPECT_TRUE(fs_.remove(directory_.makeFile("file")));
}

// A package that is put there in between would be anybody's to exchange.
TEST_F(PrivilegedFSFaultTest, APrivateDirectoryIsNobodyElsesFromItsFirstMoment) {
  const std::string staging = directory_.path("staging");
  const mode_t before = ::umask(0);
  auto permissions = std::filesystem::perms::unknown;

  const SystemCallHook made("chmod", 1, [&] { permissions = std::filesystem::status(staging).permissions(); });
  EXPECT_TRUE(fs_.makePrivateDir(staging, 0700));
  ::umask(before);

  EXPECT_EQ(permissions, std::filesystem::perms::owner_all);
}

TEST_F(PrivilegedFSFaultTest, ADirectoryThatCannotBeNarrowedIsNotPrivate) {
  const SystemCallFault fault("chmod", EPERM);

  EXPECT_FALSE(fs_.makePrivateDir(directory_.makeDirectory("staging"), 0700));
}

TEST_F(PrivilegedFSFaultTest, AFileThatCannotBeRemovedStays) {
  const SystemCallFault fault("unlink", EPERM);

  EXPECT_FALSE(fs_.remove(directory_.makeFile("file")));
}

TEST_F(PrivilegedFSFaultTest, ARemovalThatFailsCountsWhenNothingIsLeftAllTheSame) {
  const std::string file = directory_.makeFile("file");
  const SystemCallHook somebodyElse("open", 1, [&] { std::filesystem::remove(file); });
  const SystemCallFault fault("open", EMFILE, 1, kForEver);

  EXPECT_TRUE(fs_.removeTree(file));
}

TEST_F(PrivilegedFSFaultTest, ARemovalThatFailsAndLeavesSomethingHasFailed) {
  const SystemCallFault fault("open", EMFILE, 1, kForEver);

  EXPECT_FALSE(fs_.removeTree(directory_.makeFile("file")));
}

TEST_F(PrivilegedFSFaultTest, AListingThatFailsPartWayHasNoEntries) {
  directory_.makeFile("a");
  directory_.makeFile("b");
  // The first two calls answer "." and "..", or some of the names.
  const SystemCallFault fault("readdir", EIO, 4, 4);

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
  EXPECT_EQ(fault.calls(), 4);
}

TEST_F(PrivilegedFSFaultTest, NothingIsCopiedIntoADirectoryThatCannotBeRemoved) {
  directory_.makeFile("copy/kept", "kept");
  const SystemCallFault fault("unlinkat", EIO, 1, kForEver);

  EXPECT_FALSE(fs_.copyTree(makeBundle(), copy_));

  EXPECT_THAT(fs_.entries(copy_), ElementsAre("kept"));
}

TEST_F(PrivilegedFSFaultTest, WhatCouldNotBeRemovedIsNotRemovedByAFailedCopyEither) {
  directory_.makeFile("copy/kept", "kept");
  const SystemCallFault fault("unlinkat", EIO);

  EXPECT_FALSE(fs_.copyTree(makeBundle(), copy_));

  EXPECT_EQ(contentsOf(copy_ + "/kept"), "kept");
}

// Between the look at the destination and the copy, which looks at its source first.
TEST_F(PrivilegedFSFaultTest, WhatSomebodyElsePutsAtTheDestinationMeanwhileStays) {
  const SystemCallHook somebodyElse("lstat", 2, [&] { directory_.makeFile("copy", "theirs"); });

  EXPECT_FALSE(fs_.copyTree(directory_.makeFile("broker", "code"), copy_));

  EXPECT_EQ(contentsOf(copy_), "theirs");
}

TEST_F(PrivilegedFSFaultTest, WhatSomebodyElsePutsIntoAFailingCopyGoesWithIt) {
  const std::string bundle = makeBundle();
  const SystemCallHook somebodyElse("open", 1, [&] { directory_.makeFile("copy/Contents/Info.plist", "theirs"); });

  EXPECT_FALSE(fs_.copyTree(bundle, copy_));

  EXPECT_FALSE(isNamed(copy_));
}

class StageFileFaultTest : public PrivilegedFSFaultTest {
 protected:
  std::string source_ = directory_.makeFile("source", "package");
  std::string staged_ = directory_.path("staged");
};

struct StagingRow {
  const char* name;
  const char* function;
  int error;
};
void PrintTo(const StagingRow& row, std::ostream* out) { *out << row.name; }

class StagingFault : public StageFileFaultTest, public testing::WithParamInterface<StagingRow> {};

TEST_P(StagingFault, IsAFailureAndLeavesNothing) {
  {
    const SystemCallFault fault(GetParam().function, GetParam().error);
    EXPECT_FALSE(fs_.stageFile(source_, staged_));
    EXPECT_GT(fault.calls(), 0);
  }

  EXPECT_FALSE(isNamed(staged_));
  EXPECT_EQ(contentsOf(source_), "package");
}

// The destination is closed first: a file system may report only then that it had no room.
INSTANTIATE_TEST_SUITE_P(
    Table, StagingFault,
    testing::Values(StagingRow{"source not opened", "open", EACCES}, StagingRow{"source not judged", "fstat", EIO},
                    StagingRow{"source not read", "read", EIO}, StagingRow{"copy not written", "write", ENOSPC},
                    StagingRow{"copy written by nothing", "write", 0}, StagingRow{"copy not closed", "close", EIO}));

TEST_F(StageFileFaultTest, ADestinationThatCannotBeMadeIsNotRemoved) {
  const SystemCallFault open("open", EEXIST, 2, 2);
  const SystemCallFault unlink("unlink", EIO);

  EXPECT_FALSE(fs_.stageFile(source_, staged_));

  EXPECT_EQ(unlink.calls(), 0);
}

TEST_F(StageFileFaultTest, ASourceThatGrowsPastTheBoundWhileItIsCopiedIsRefused) {
  constexpr std::uintmax_t kLargest = 268'435'456;
  const std::string source = directory_.makeSparseFile("large", kLargest);
  const SystemCallHook itsOwner("read", 1, [&] { std::filesystem::resize_file(source, kLargest + 1); });

  EXPECT_FALSE(fs_.stageFile(source, staged_));

  EXPECT_FALSE(isNamed(staged_));
}

TEST_F(StageFileFaultTest, ASourceThatShrinksWhileItIsCopiedEndsWhereItEnds) {
  const std::string source = directory_.makeFile("shrinking", std::string(3'000'000, 's'));
  const SystemCallHook itsOwner("read", 2, [&] { std::filesystem::resize_file(source, 1'500'000); });

  EXPECT_TRUE(fs_.stageFile(source, staged_));

  EXPECT_TRUE(contentsOf(staged_) == std::string(1'500'000, 's'));
}

TEST_F(StageFileFaultTest, AToolThatIsStartedMeanwhileInheritsNeitherFile) {
  const std::vector<int> before = openDescriptors();
  std::vector<int> flags;
  const SystemCallHook look("read", 1, [&] {
    std::vector<int> ours;
    std::ranges::set_difference(openDescriptors(), before, std::back_inserter(ours));
    std::ranges::transform(ours, std::back_inserter(flags), [](int file) { return ::fcntl(file, F_GETFD); });
  });

  ASSERT_TRUE(fs_.stageFile(source_, staged_));

  EXPECT_THAT(flags, ElementsAre(FD_CLOEXEC, FD_CLOEXEC));
}

// Nobody's link is followed, nobody's FIFO is waited for, and what is there already is not written. Some of this
// another flag grants as well: none is left out, since systems differ in what one flag implies of another.
TEST_F(StageFileFaultTest, BothFilesAreOpenedWithEveryGuardThereIs) {
  const NotedOpenings openings;

  ASSERT_TRUE(fs_.stageFile(source_, staged_));

  EXPECT_THAT(openings.flags(), ElementsAre(O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC,
                                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC));
}

class BoundedCopyFaultTest : public PrivilegedFSFaultTest {
 protected:
  bool copy(std::int64_t max = kForEver) const {
    const UniqueDescriptor to(::open(copy_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    return halvoCopyBounded(source_.get(), to.get(), max);
  }

  UniqueDescriptor source_{::open(directory_.makeFile("source", "package").c_str(), O_RDONLY | O_CLOEXEC)};
};

TEST_F(BoundedCopyFaultTest, AnInterruptedReadIsRepeated) {
  const SystemCallFault fault("read", EINTR, 1, 3);

  EXPECT_TRUE(copy());

  EXPECT_EQ(contentsOf(copy_), "package");
}

TEST_F(BoundedCopyFaultTest, AnInterruptedWriteIsRepeated) {
  const SystemCallFault fault("write", EINTR, 1, 3);

  EXPECT_TRUE(copy());

  EXPECT_EQ(contentsOf(copy_), "package");
}

// Also where an earlier call left behind that it was interrupted.
TEST_F(BoundedCopyFaultTest, AWriteOfNothingFailsAtOnce) {
  const SystemCallFault fault("write", 0, 1, kForEver);
  errno = EINTR;

  EXPECT_FALSE(copy());

  EXPECT_EQ(fault.calls(), 1);
}

struct CopyFaultRow {
  const char* function;
  int error;
};
void PrintTo(const CopyFaultRow& row, std::ostream* out) { *out << row.function << " fails with " << row.error; }

class CopyFault : public BoundedCopyFaultTest, public testing::WithParamInterface<CopyFaultRow> {};

TEST_P(CopyFault, EndsTheCopyAtOnce) {
  const SystemCallFault fault(GetParam().function, GetParam().error, 1, kForEver);

  EXPECT_FALSE(copy());

  EXPECT_EQ(fault.calls(), 1);
}

INSTANTIATE_TEST_SUITE_P(Table, CopyFault,
                         testing::Values(CopyFaultRow{"read", EIO}, CopyFaultRow{"read", EAGAIN},
                                         CopyFaultRow{"write", ENOSPC}, CopyFaultRow{"write", EAGAIN}));

}  // namespace
}  // namespace halvo
