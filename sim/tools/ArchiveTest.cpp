
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/tools/Archive.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Kind = CpioEntry::Kind;

class UnpackTest : public testing::Test {
 protected:
  UnpackTest() {
    directory_.write("outside/file", "untouched");
    std::filesystem::create_directory(root_);
  }

  Unpacked unpackOf(const std::vector<CpioEntry>& entries) const { return unpack(gzippedCpio(entries), root_); }
  std::filesystem::path outside() const { return directory_.path() / "outside"; }
  bool outsideIsUntouched() const {
    const auto names = std::filesystem::directory_iterator(outside());
    return std::distance(begin(names), end(names)) == 1 && directory_.read("outside/file") == "untouched";
  }
  bool rootIsEmpty() const { return std::filesystem::is_empty(root_); }

  TemporaryDirectory directory_;
  std::filesystem::path root_ = directory_.path() / "root";
};

TEST_F(UnpackTest, FilesFoldersAndLinksComeOutAsTheyWentIn) {
  const Unpacked result = unpackOf({{.path = "./folder", .kind = Kind::directory, .mode = 0750},
                                    {.path = "./folder/file", .mode = 0600, .content = "text"},
                                    {.path = "./folder/link", .kind = Kind::link, .mode = 0777, .content = "file"}});

  EXPECT_EQ(result.problem, "");
  EXPECT_THAT(result.paths, ElementsAre("folder", "folder/file", "folder/link"));
  EXPECT_EQ(directory_.read("root/folder/file"), "text");
  EXPECT_EQ(std::filesystem::read_symlink(root_ / "folder/link"), "file");
  EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(root_ / "folder").permissions()), 0750U);
  EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(root_ / "folder/file").permissions()), 0600U);
}

TEST_F(UnpackTest, DatesAreThoseOfTheArchive) {
  unpackOf({{.path = "file", .content = "text"}});

  struct stat facts {};
  ASSERT_EQ(::stat((root_ / "file").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mtime, 1770802212);
}

TEST_F(UnpackTest, FoldersThatAreNotInTheArchiveAreMade) {
  EXPECT_EQ(unpackOf({{.path = "./a/b/c", .content = "text"}}).problem, "");

  EXPECT_EQ(directory_.read("root/a/b/c"), "text");
}

TEST_F(UnpackTest, EverythingBelongsToRootWhateverTheArchiveSays) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  unpackOf({{.path = "file", .owner = 501}});

  struct stat facts {};
  ASSERT_EQ(::stat((root_ / "file").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_uid, 0U);
  EXPECT_EQ(facts.st_gid, 0U);
}

TEST_F(UnpackTest, ABundleIsReplacedAsAWholeAndOtherFilesStay) {
  directory_.write("root/X.driver/Contents/old", "gone");
  directory_.write("root/Folder/other", "kept");

  unpackOf({{.path = "./Folder", .kind = Kind::directory, .mode = 0755},
            {.path = "./X.driver", .kind = Kind::directory, .mode = 0755},
            {.path = "./X.driver/Contents/Info.plist", .content = "new"}});

  EXPECT_FALSE(std::filesystem::exists(root_ / "X.driver/Contents/old"));
  EXPECT_EQ(directory_.read("root/X.driver/Contents/Info.plist"), "new");
  EXPECT_EQ(directory_.read("root/Folder/other"), "kept");
}

TEST_F(UnpackTest, NothingIsWrittenOutsideTheRoot) {
  EXPECT_NE(unpackOf({{.path = "../outside/file", .content = "x"}}).problem, "");
  EXPECT_NE(
      unpackOf({{.path = "./way", .kind = Kind::link, .content = "../outside"}, {.path = "./way/file", .content = "x"}})
          .problem,
      "");

  EXPECT_TRUE(outsideIsUntouched());
}

TEST_F(UnpackTest, ALinkOnDiskIsNotFollowed) {
  std::filesystem::create_directory_symlink(outside(), root_ / "way");

  EXPECT_THAT(unpackOf({{.path = "./way/file", .content = "x"}}).problem, HasSubstr("symlink"));

  EXPECT_TRUE(outsideIsUntouched());
}

TEST_F(UnpackTest, ALinkOnDiskInPlaceOfAFileIsReplaced) {
  std::filesystem::create_symlink(outside() / "file", root_ / "file");

  EXPECT_EQ(unpackOf({{.path = "./file", .content = "new"}}).problem, "");

  EXPECT_EQ(directory_.read("root/file"), "new");
  EXPECT_FALSE(std::filesystem::is_symlink(root_ / "file"));
  EXPECT_TRUE(outsideIsUntouched());
}

TEST_F(UnpackTest, ARunningProgramIsReplacedByANewFile) {
  directory_.write("root/program", "old");
  std::filesystem::create_hard_link(root_ / "program", root_ / "running");

  unpackOf({{.path = "./program", .content = "new"}});

  EXPECT_EQ(directory_.read("root/program"), "new");
  EXPECT_EQ(directory_.read("root/running"), "old");
}

TEST_F(UnpackTest, SomethingElseThanAnArchiveIsAProblem) {
  EXPECT_NE(unpack("no archive", root_).problem, "");
  EXPECT_NE(unpack("", root_).problem, "");

  EXPECT_TRUE(rootIsEmpty());
}

TEST_F(UnpackTest, ARootThatIsNotThereIsAProblem) {
  EXPECT_THAT(unpack(gzippedCpio({{.path = "file"}}), root_ / "absent").problem, HasSubstr("No such file"));
}

}  // namespace
}  // namespace halvo::sim
