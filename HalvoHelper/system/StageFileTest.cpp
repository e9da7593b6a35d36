#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

constexpr std::uintmax_t kLargest = 268'435'456;
constexpr std::uintmax_t kMiB = 1'048'576;

class StageFileTest : public testing::Test {
 protected:
  // In a process of its own, so that limits and memory are its own.
  static std::string probe(const std::vector<std::string>& arguments) {
    return RealProcessRunner().run(HALVO_FILE_PROBE, arguments).output;
  }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
  std::string staged_ = directory_.path("staged");
};

TEST_F(StageFileTest, CopiesARegularFile) {
  const std::string source = directory_.makeFile("source", std::string("pkg\0\xFF", 5));

  EXPECT_TRUE(fs_.stageFile(source, staged_));

  EXPECT_EQ(contentsOf(staged_), std::string("pkg\0\xFF", 5));
  EXPECT_EQ(contentsOf(source), std::string("pkg\0\xFF", 5));
}

TEST_F(StageFileTest, CopiesAnEmptyFile) {
  EXPECT_TRUE(fs_.stageFile(directory_.makeFile("source"), staged_));

  EXPECT_EQ(contentsOf(staged_), "");
}

TEST_F(StageFileTest, TheCopyIsForItsOwnerOnlyWhateverTheSourceAllows) {
  const ScopedUmask umask(0);
  const std::string source = directory_.makeFile("source");
  std::filesystem::permissions(source, std::filesystem::perms(04777));

  ASSERT_TRUE(fs_.stageFile(source, staged_));

  EXPECT_EQ(permissionsOf(staged_), 0600U);
}

TEST_F(StageFileTest, AWriterOfTheSourceDoesNotReachTheCopy) {
  const std::string source = directory_.makeFile("source", "judged");
  const std::string hardLink = directory_.path("hard-link");
  std::filesystem::create_hard_link(source, hardLink);
  const UniqueDescriptor writer(::open(source.c_str(), O_WRONLY | O_CLOEXEC));

  ASSERT_TRUE(fs_.stageFile(hardLink, staged_));
  ASSERT_EQ(::write(writer.get(), "evil!!", 6), 6);

  EXPECT_EQ(contentsOf(staged_), "judged");
}

TEST_F(StageFileTest, ALinkAsSourceIsRefused) {
  const std::string file = directory_.makeFile("file", "secret");

  EXPECT_FALSE(fs_.stageFile(directory_.makeLink("link", file), staged_));
  EXPECT_FALSE(fs_.stageFile(directory_.makeLink("dangling", "/no/such/file"), staged_));

  EXPECT_FALSE(isNamed(staged_));
}

TEST_F(StageFileTest, ALinkAmongTheDirectoriesAboveTheSourceIsFollowed) {
  directory_.makeFile("real/source", "pkg");
  const std::string link = directory_.makeLink("link", directory_.path("real"));

  EXPECT_TRUE(fs_.stageFile(link + "/source", staged_));

  EXPECT_EQ(contentsOf(staged_), "pkg");
}

TEST_F(StageFileTest, WhatIsNotARegularFileIsRefused) {
  EXPECT_FALSE(fs_.stageFile(directory_.makeDirectory("directory"), staged_));
  EXPECT_FALSE(fs_.stageFile(directory_.makeFifo("fifo"), staged_));
  EXPECT_FALSE(fs_.stageFile("/dev/null", staged_));
  EXPECT_FALSE(fs_.stageFile("/dev/zero", staged_));

  EXPECT_FALSE(isNamed(staged_));
}

TEST_F(StageFileTest, AnAbsentSourceIsRefused) {
  EXPECT_FALSE(fs_.stageFile(directory_.path("absent"), staged_));
  EXPECT_FALSE(fs_.stageFile("", staged_));
  EXPECT_FALSE(fs_.stageFile(directory_.makeFile("file") + "/", staged_));

  EXPECT_FALSE(isNamed(staged_));
}

TEST_F(StageFileTest, TheLargestSizeIsCopied) {
  EXPECT_TRUE(fs_.stageFile(directory_.makeSparseFile("source", kLargest), staged_));

  EXPECT_EQ(std::filesystem::file_size(staged_), kLargest);
}

TEST_F(StageFileTest, OneByteMoreIsRefusedBeforeAnythingIsMade) {
  const std::string source = directory_.makeSparseFile("source", kLargest + 1);
  const std::string staging = directory_.makeDirectory("staging");
  const timespec lastYear{1'700'000'000, 0};
  setTimes(staging, lastYear);

  EXPECT_FALSE(fs_.stageFile(source, staging + "/staged"));

  EXPECT_TRUE(sameTime(modifiedAt(staging), lastYear));
  EXPECT_FALSE(isNamed(staging + "/staged"));
}

TEST_F(StageFileTest, AnExistingDestinationIsLeftAlone) {
  const std::string source = directory_.makeFile("source", "new");
  const std::string existing = directory_.makeFile("existing", "old");

  EXPECT_FALSE(fs_.stageFile(source, existing));
  EXPECT_FALSE(fs_.stageFile(source, source));
  EXPECT_FALSE(fs_.stageFile(source, directory_.path()));

  EXPECT_EQ(contentsOf(existing), "old");
  EXPECT_EQ(contentsOf(source), "new");
}

TEST_F(StageFileTest, ALinkAtTheDestinationIsNeitherFollowedNorRemoved) {
  const std::string source = directory_.makeFile("source", "new");
  const std::string victim = directory_.makeFile("victim", "old");
  const std::string link = directory_.makeLink("link", victim);
  const std::string dangling = directory_.makeLink("dangling", directory_.path("absent"));

  EXPECT_FALSE(fs_.stageFile(source, link));
  EXPECT_FALSE(fs_.stageFile(source, dangling));

  EXPECT_EQ(contentsOf(victim), "old");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_TRUE(std::filesystem::is_symlink(dangling));
  EXPECT_FALSE(isNamed(directory_.path("absent")));
}

TEST_F(StageFileTest, TheDirectoryOfTheDestinationIsNotMade) {
  EXPECT_FALSE(fs_.stageFile(directory_.makeFile("source"), directory_.path("absent/staged")));

  EXPECT_FALSE(isNamed(directory_.path("absent")));
}

TEST_F(StageFileTest, ACopyThatCannotBeFinishedLeavesNothing) {
  const std::string source = directory_.makeSparseFile("source", 5 * kMiB);

  EXPECT_EQ(probe({"stage-file-limited", "3000000", source, staged_}), "false");

  EXPECT_FALSE(isNamed(staged_));
  EXPECT_TRUE(isNamed(source));
}

TEST_F(StageFileTest, NoDescriptorStaysOpen) {
  const std::string source = directory_.makeFile("source", "pkg");
  const std::vector<int> before = openDescriptors();

  fs_.stageFile(source, staged_);
  fs_.stageFile(source, staged_);
  fs_.stageFile(directory_.path(), staged_);
  fs_.stageFile(directory_.makeSparseFile("large", kLargest + 1), staged_);

  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(StageFileTest, MemoryDoesNotGrowWithTheFile) {
  const std::string small = directory_.makeSparseFile("small", 2 * kMiB);
  const std::string large = directory_.makeSparseFile("large", 200 * kMiB);

  const double forSmall = std::stod(probe({"stage-file-memory", small, directory_.path("a")}));
  const double forLarge = std::stod(probe({"stage-file-memory", large, directory_.path("b")}));

  EXPECT_GT(forSmall, 0);
  EXPECT_LT(forLarge, forSmall * 1.5);
}

}  // namespace
}  // namespace halvo
