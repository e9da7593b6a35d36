#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::UnorderedElementsAre;

class CopyTreeTest : public testing::Test {
 protected:
  std::string makeBundle() const {
    directory_.makeFile("Halvo.driver/Contents/Info.plist", "info");
    directory_.makeFile("Halvo.driver/Contents/MacOS/Halvo", "code");
    directory_.makeFile("Halvo.driver/.hidden", "hidden");
    directory_.makeDirectory("Halvo.driver/empty");
    return directory_.path("Halvo.driver");
  }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
  std::string copy_ = directory_.path("copy");
};

TEST_F(CopyTreeTest, CopiesAWholeTreeAndLeavesTheSource) {
  const std::string bundle = makeBundle();

  EXPECT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_EQ(contentsOf(copy_ + "/Contents/Info.plist"), "info");
  EXPECT_EQ(contentsOf(copy_ + "/Contents/MacOS/Halvo"), "code");
  EXPECT_EQ(contentsOf(copy_ + "/.hidden"), "hidden");
  EXPECT_TRUE(std::filesystem::is_directory(copy_ + "/empty"));
  EXPECT_EQ(contentsOf(bundle + "/Contents/Info.plist"), "info");
}

TEST_F(CopyTreeTest, CopiesASingleFile) {
  EXPECT_TRUE(fs_.copyTree(directory_.makeFile("broker", "code"), copy_));

  EXPECT_EQ(contentsOf(copy_), "code");
}

TEST_F(CopyTreeTest, MakesTheDirectoriesAboveTheDestination) {
  EXPECT_TRUE(fs_.copyTree(directory_.makeFile("broker", "code"), directory_.path("a/b/c")));

  EXPECT_EQ(contentsOf(directory_.path("a/b/c")), "code");
}

TEST_F(CopyTreeTest, ReplacesAnExistingTreeInsteadOfMerging) {
  directory_.makeFile("copy/Contents/stale", "old");
  directory_.makeFile("copy/.hidden", "old");

  EXPECT_TRUE(fs_.copyTree(makeBundle(), copy_));

  EXPECT_THAT(fs_.entries(copy_), UnorderedElementsAre("Contents", ".hidden", "empty"));
  EXPECT_THAT(fs_.entries(copy_ + "/Contents"), UnorderedElementsAre("Info.plist", "MacOS"));
  EXPECT_EQ(contentsOf(copy_ + "/.hidden"), "hidden");
}

TEST_F(CopyTreeTest, AFileReplacesATreeAndATreeAFile) {
  const std::string file = directory_.makeFile("file", "code");
  directory_.makeFile("tree-there/x");
  const std::string fileThere = directory_.makeFile("file-there");

  EXPECT_TRUE(fs_.copyTree(file, directory_.path("tree-there")));
  EXPECT_TRUE(fs_.copyTree(makeBundle(), fileThere));

  EXPECT_EQ(contentsOf(directory_.path("tree-there")), "code");
  EXPECT_EQ(contentsOf(fileThere + "/Contents/Info.plist"), "info");
}

TEST_F(CopyTreeTest, ALinkAtTheDestinationIsReplacedAndItsTargetLeftAlone) {
  const std::string target = directory_.makeDirectory("target");
  directory_.makeFile("target/kept", "kept");
  const std::string link = directory_.makeLink("link", target);

  EXPECT_TRUE(fs_.copyTree(makeBundle(), link));

  EXPECT_FALSE(std::filesystem::is_symlink(link));
  EXPECT_THAT(fs_.entries(target), UnorderedElementsAre("kept"));
}

TEST_F(CopyTreeTest, ADanglingLinkAtTheDestinationMakesItFailAndStays) {
  const std::string dangling = directory_.makeLink("dangling", directory_.path("absent"));

  EXPECT_FALSE(fs_.copyTree(makeBundle(), dangling));

  EXPECT_TRUE(std::filesystem::is_symlink(dangling));
  EXPECT_FALSE(isNamed(directory_.path("absent")));
}

TEST_F(CopyTreeTest, LinksInsideAreCopiedAsLinks) {
  const std::string bundle = makeBundle();
  directory_.makeLink("Halvo.driver/Current", "Contents");
  directory_.makeLink("Halvo.driver/outside", "/etc");
  directory_.makeLink("Halvo.driver/dangling", "/no/such/file");

  EXPECT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_EQ(std::filesystem::read_symlink(copy_ + "/Current"), "Contents");
  EXPECT_EQ(std::filesystem::read_symlink(copy_ + "/outside"), "/etc");
  EXPECT_EQ(std::filesystem::read_symlink(copy_ + "/dangling"), "/no/such/file");
}

TEST_F(CopyTreeTest, ALinkGivenAsSourceIsCopiedAsALink) {
  const std::string link = directory_.makeLink("link", makeBundle());

  EXPECT_TRUE(fs_.copyTree(link, copy_));

  EXPECT_EQ(std::filesystem::read_symlink(copy_), directory_.path("Halvo.driver"));
}

TEST_F(CopyTreeTest, PermissionsAreKeptWhateverTheUmask) {
  const ScopedUmask umask(0077);
  const std::string bundle = makeBundle();
  std::filesystem::permissions(bundle + "/Contents/MacOS/Halvo", std::filesystem::perms(0755));
  std::filesystem::permissions(bundle + "/Contents/Info.plist", std::filesystem::perms(0444));
  std::filesystem::permissions(bundle + "/Contents", std::filesystem::perms(0555));

  EXPECT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_EQ(permissionsOf(copy_ + "/Contents/MacOS/Halvo"), 0755U);
  EXPECT_EQ(permissionsOf(copy_ + "/Contents/Info.plist"), 0444U);
  EXPECT_EQ(permissionsOf(copy_ + "/Contents"), 0555U);
}

TEST_F(CopyTreeTest, SetIdBitsOfDirectoriesAreKeptAndThoseOfFilesDropped) {
  const std::string bundle = makeBundle();
  std::filesystem::permissions(bundle + "/Contents/MacOS/Halvo", std::filesystem::perms(04755));
  std::filesystem::permissions(bundle + "/Contents", std::filesystem::perms(04755));

  EXPECT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_EQ(permissionsOf(copy_ + "/Contents/MacOS/Halvo"), 0755U);
  EXPECT_EQ(permissionsOf(copy_ + "/Contents"), 04755U);
}

TEST_F(CopyTreeTest, ModificationTimesAreKeptToTheNanosecond) {
  const std::string bundle = makeBundle();
  const timespec fileTime{1'700'000'000, 123'456'789};
  const timespec directoryTime{1'600'000'000, 987'654'321};
  setTimes(bundle + "/Contents/Info.plist", fileTime);
  setTimes(bundle + "/Contents", directoryTime);

  ASSERT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_TRUE(sameTime(modifiedAt(copy_ + "/Contents/Info.plist"), fileTime));
  EXPECT_TRUE(sameTime(modifiedAt(copy_ + "/Contents"), directoryTime));
}

TEST_F(CopyTreeTest, AnAbsentSourceFailsAfterTheDestinationWasRemoved) {
  const std::string destination = directory_.makeFile("copy", "old");

  EXPECT_FALSE(fs_.copyTree(directory_.path("absent"), destination));

  EXPECT_FALSE(isNamed(destination));
}

TEST_F(CopyTreeTest, ATreeThatHoldsAFifoIsNotCopiedAndNothingOfItStays) {
  const std::string bundle = makeBundle();
  directory_.makeFifo("Halvo.driver/fifo");

  EXPECT_FALSE(fs_.copyTree(bundle, copy_));

  EXPECT_FALSE(isNamed(copy_));
  EXPECT_EQ(contentsOf(bundle + "/Contents/Info.plist"), "info");
}

TEST_F(CopyTreeTest, AFileThatDoesNotFitLeavesNothing) {
  const std::string source = directory_.makeSparseFile("source", 5'000'000);

  EXPECT_EQ(RealProcessRunner().run(HALVO_FILE_PROBE, {"copy-tree-limited", "3000000", source, copy_}).output, "false");

  EXPECT_FALSE(isNamed(copy_));
  EXPECT_TRUE(isNamed(source));
}

TEST_F(CopyTreeTest, TrailingSlashesOfTheDestinationAreIgnored) {
  const std::string file = directory_.makeFile("file", "kept");

  EXPECT_TRUE(fs_.copyTree(makeBundle(), copy_ + "//"));
  EXPECT_FALSE(fs_.copyTree(directory_.makeFile("broker"), file + "/"));

  EXPECT_EQ(contentsOf(copy_ + "/Contents/Info.plist"), "info");
  EXPECT_EQ(contentsOf(file), "kept");
}

TEST_F(CopyTreeTest, FailsWhenNoDirectoryCanBeMadeAboveTheDestination) {
  const std::string file = directory_.makeFile("file", "kept");

  EXPECT_FALSE(fs_.copyTree(makeBundle(), file + "/copy"));
  EXPECT_FALSE(fs_.copyTree(file, "no-directory-in-this-path"));
  EXPECT_FALSE(fs_.copyTree(file, ""));

  EXPECT_EQ(contentsOf(file), "kept");
}

class OwnerKeptTest : public CopyTreeTest {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give files to another user";
  }

  static uid_t ownerOf(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 ? info.st_uid : 0;
  }
};

TEST_F(OwnerKeptTest, RootsCopyBelongsToTheSameUser) {
  const std::string bundle = makeBundle();
  ASSERT_EQ(::chown((bundle + "/Contents/Info.plist").c_str(), 501, 20), 0);

  EXPECT_TRUE(fs_.copyTree(bundle, copy_));

  EXPECT_EQ(ownerOf(copy_ + "/Contents/Info.plist"), 501U);
  EXPECT_EQ(ownerOf(copy_ + "/.hidden"), 0U);
}

}  // namespace
}  // namespace halvo
