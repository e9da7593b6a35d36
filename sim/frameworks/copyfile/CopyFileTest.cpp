#include <copyfile.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

namespace fs = std::filesystem;

constexpr copyfile_flags_t kLikeFinder =
    COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_NOFOLLOW | COPYFILE_EXCL | COPYFILE_CLONE;

class CopyFileTest : public testing::Test {
 protected:
  std::string path(const char* name) const { return (directory_.path() / name).string(); }

  int copy(const char* from, const char* to, copyfile_flags_t flags = kLikeFinder) const {
    return ::copyfile(path(from).c_str(), path(to).c_str(), nullptr, flags);
  }

  struct stat statusOf(const char* name) const {
    struct stat info {};
    EXPECT_EQ(::lstat(path(name).c_str(), &info), 0) << name;
    return info;
  }

  TemporaryDirectory directory_;
};

TEST_F(CopyFileTest, ATreeIsCopiedWithItsContents) {
  directory_.write("source/top", "1");
  directory_.write("source/inner/deep", "2");
  directory_.write("source/.hidden", "3");

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_EQ(directory_.read("copy/top"), "1");
  EXPECT_EQ(directory_.read("copy/inner/deep"), "2");
  EXPECT_EQ(directory_.read("copy/.hidden"), "3");
}

TEST_F(CopyFileTest, ALargeFileIsCopiedWhole) {
  const std::string content(1'000'003, 'x');
  directory_.write("source", content);

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_EQ(directory_.read("copy"), content);
}

TEST_F(CopyFileTest, ModesAndTimesAreKeptToTheNanosecond) {
  directory_.write("source/file", "x");
  ASSERT_EQ(::chmod(path("source/file").c_str(), 0640), 0);
  const std::array<timespec, 2> times = {{{1'000'000'000, 123'456'789}, {1'100'000'000, 987'654'321}}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path("source/file").c_str(), times.data(), 0), 0);
  ASSERT_EQ(::utimensat(AT_FDCWD, path("source").c_str(), times.data(), 0), 0);
  ASSERT_EQ(::chmod(path("source").c_str(), 0511), 0);

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_EQ(statusOf("copy/file").st_mode, static_cast<mode_t>(S_IFREG | 0640));
  EXPECT_EQ(statusOf("copy").st_mode, static_cast<mode_t>(S_IFDIR | 0511));
  EXPECT_EQ(statusOf("copy/file").st_mtimespec.tv_nsec, 987'654'321);
  EXPECT_EQ(statusOf("copy/file").st_atim.tv_nsec, 123'456'789);
  EXPECT_EQ(statusOf("copy").st_mtimespec.tv_sec, 1'100'000'000);
  ASSERT_EQ(::chmod(path("copy").c_str(), 0700), 0);
  ASSERT_EQ(::chmod(path("source").c_str(), 0700), 0);
}

TEST_F(CopyFileTest, TheOwnerIsKeptWhenRootCopies) {
  if (::geteuid() != 0) GTEST_SKIP() << "giving a file away needs root";
  directory_.write("source", "x");
  ASSERT_EQ(::chown(path("source").c_str(), 501, 20), 0);

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_EQ(statusOf("copy").st_uid, 501U);
  EXPECT_EQ(statusOf("copy").st_gid, 20U);
}

TEST_F(CopyFileTest, SetIdBitsOfAFileDoNotSurviveAClone) {
  directory_.write("source", "x");
  ASSERT_EQ(::chmod(path("source").c_str(), 06755), 0);

  ASSERT_EQ(copy("source", "clone"), 0);

  EXPECT_EQ(statusOf("clone").st_mode & 07777U, 0755U);
}

TEST_F(CopyFileTest, SetIdBitsOfADirectorySurviveAClone) {
  directory_.write("source/file", "x");
  ASSERT_EQ(::chmod(path("source").c_str(), 06755), 0);

  ASSERT_EQ(copy("source", "clone"), 0);

  EXPECT_EQ(statusOf("clone").st_mode & 07777U, 06755U);
}

TEST_F(CopyFileTest, LinksAreMadeLastSoThatADirectoryThatHoldsOneIsNew) {
  directory_.write("source/with-link/file", "x");
  directory_.write("source/without/file", "x");
  fs::create_symlink("file", directory_.path() / "source/with-link/link");
  const std::array<timespec, 2> times = {{{1'000'000'000, 0}, {1'100'000'000, 0}}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path("source/with-link").c_str(), times.data(), 0), 0);
  ASSERT_EQ(::utimensat(AT_FDCWD, path("source/without").c_str(), times.data(), 0), 0);

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_NE(statusOf("copy/with-link").st_mtimespec.tv_sec, 1'100'000'000);
  EXPECT_EQ(statusOf("copy/without").st_mtimespec.tv_sec, 1'100'000'000);
}

TEST_F(CopyFileTest, ExtendedAttributesAreCarriedOver) {
  directory_.write("source", "x");
  if (::setxattr(path("source").c_str(), "user.quarantine", "yes", 3, 0) != 0) {
    GTEST_SKIP() << "the file system of the temporary directory has no extended attributes";
  }

  ASSERT_EQ(copy("source", "copy"), 0);

  std::array<char, 8> value{};
  EXPECT_EQ(::getxattr(path("copy").c_str(), "user.quarantine", value.data(), value.size()), 3);
  EXPECT_STREQ(value.data(), "yes");
}

TEST_F(CopyFileTest, LinksAreCopiedAndNeverFollowed) {
  directory_.write("secret", "root only");
  directory_.write("source/file", "x");
  fs::create_symlink("../secret", directory_.path() / "source/link");
  fs::create_symlink("nowhere", directory_.path() / "source/dangling");

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_EQ(fs::read_symlink(directory_.path() / "copy/link"), "../secret");
  EXPECT_EQ(fs::read_symlink(directory_.path() / "copy/dangling"), "nowhere");
}

TEST_F(CopyFileTest, ALinkGivenAsTheSourceIsCopiedItself) {
  directory_.write("target/file", "x");
  fs::create_symlink("target", directory_.path() / "source");

  ASSERT_EQ(copy("source", "copy"), 0);

  EXPECT_TRUE(S_ISLNK(statusOf("copy").st_mode));
}

TEST_F(CopyFileTest, AnExistingDestinationIsRefusedAndKept) {
  directory_.write("source", "new");
  directory_.write("copy", "old");
  fs::create_symlink("nowhere", directory_.path() / "link");

  EXPECT_EQ(copy("source", "copy"), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(copy("source", "link"), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(directory_.read("copy"), "old");
}

TEST_F(CopyFileTest, ADirectoryOnTopOfAFileIsRefused) {
  directory_.write("source/file", "x");
  directory_.write("copy", "old");

  EXPECT_EQ(copy("source", "copy"), -1);
  EXPECT_EQ(errno, EEXIST);
}

TEST_F(CopyFileTest, AnExistingDirectoryMeansCopyIntoIt) {
  directory_.write("source/file", "x");
  directory_.write("target/other", "y");

  ASSERT_EQ(copy("source", "target"), 0);
  ASSERT_EQ(copy("source/", "target", kLikeFinder), -1);

  EXPECT_EQ(directory_.read("target/source/file"), "x");
  EXPECT_EQ(directory_.read("target/other"), "y");
}

TEST_F(CopyFileTest, AFifoFailsAndLeavesWhatWasCopiedBefore) {
  directory_.write("source/a-file", "x");
  ASSERT_EQ(::mkfifo(path("source/b-fifo").c_str(), 0600), 0);
  directory_.write("source/c-file", "y");

  EXPECT_EQ(copy("source", "copy"), -1);

  EXPECT_EQ(errno, ENOTSUP);
  EXPECT_EQ(directory_.read("copy/a-file"), "x");
  EXPECT_FALSE(fs::exists(directory_.path() / "copy/c-file"));
}

TEST_F(CopyFileTest, ATreeCopiedIntoItselfEnds) {
  directory_.write("source/file", "x");

  ASSERT_EQ(copy("source", "source/copy"), 0);

  EXPECT_EQ(directory_.read("source/copy/file"), "x");
  EXPECT_FALSE(fs::exists(directory_.path() / "source/copy/copy"));
}

TEST_F(CopyFileTest, AMissingSourceFails) {
  EXPECT_EQ(copy("missing", "copy"), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(CopyFileTest, WhatIsNotTheCloneOfATreeIsRefused) {
  constexpr copyfile_flags_t kMove = 1 << 20;
  directory_.write("source/file", "x");

  EXPECT_EQ(copy("source", "copy", kLikeFinder | kMove), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(copy("source", "copy", kLikeFinder & ~copyfile_flags_t{COPYFILE_CLONE}), -1);
  EXPECT_EQ(copy("source", "copy", kLikeFinder & ~copyfile_flags_t{COPYFILE_RECURSIVE}), -1);
  EXPECT_FALSE(fs::exists(directory_.path() / "copy"));
}

}  // namespace
}  // namespace halvo::sim
