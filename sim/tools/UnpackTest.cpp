#include "sim/tools/Unpack.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "sim/support/TemporaryDirectory.h"
#include "sim/tools/Archive.h"
#include "sim/tools/Cpio.h"

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

// An archive with what packages of ours never hold: a named pipe, or one file under two names.
std::string oddArchive(mode_t type, int files, unsigned namesOfTheFile) {
  std::vector<char> bytes(64 * 1024);
  size_t used = 0;
  const ScopedWriter writer(archive_write_new());
  archive_write_set_format_cpio_odc(writer.get());
  requireDone(writer.get(), archive_write_open_memory(writer.get(), bytes.data(), bytes.size(), &used));
  for (int i = 0; i < files; ++i) {
    const ScopedEntry entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), ("./odd" + std::to_string(i)).c_str());
    archive_entry_set_mode(entry.get(), type | 0644U);
    archive_entry_set_ino(entry.get(), 7);
    archive_entry_set_nlink(entry.get(), namesOfTheFile);
    archive_entry_set_size(entry.get(), 0);
    requireDone(writer.get(), archive_write_header(writer.get(), entry.get()));
  }
  requireDone(writer.get(), archive_write_close(writer.get()));
  return {bytes.data(), used};
}

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

struct HostileRow {
  const char* name;
  std::vector<CpioEntry> entries;
  const char* problem;
};

class HostileArchive : public UnpackTest, public testing::WithParamInterface<HostileRow> {};

TEST_P(HostileArchive, WritesNothingAtAll) {
  std::vector<CpioEntry> entries = GetParam().entries;
  entries.insert(entries.begin(), {.path = "./harmless", .content = "text"});

  EXPECT_EQ(unpackOf(entries).problem, GetParam().problem);

  EXPECT_TRUE(rootIsEmpty());
  EXPECT_TRUE(outsideIsUntouched());
}

INSTANTIATE_TEST_SUITE_P(
    Table, HostileArchive,
    testing::Values(
        HostileRow{
            "ParentAtTheStart", {{.path = "../outside/file", .content = "x"}}, "../outside/file leads out of the root"},
        HostileRow{"ParentAfterTheDot",
                   {{.path = "./../outside/file", .content = "x"}},
                   "./../outside/file leads out of the root"},
        HostileRow{"ParentInTheMiddle",
                   {{.path = "a/../../outside/file", .content = "x"}},
                   "a/../../outside/file leads out of the root"},
        HostileRow{"ParentThatStaysInside", {{.path = "a/../b", .content = "x"}}, "a/../b leads out of the root"},
        HostileRow{"ParentAtTheEnd", {{.path = "a/..", .kind = Kind::directory}}, "a/.. leads out of the root"},
        HostileRow{"AbsolutePath", {{.path = "/outside/file", .content = "x"}}, "/outside/file leads out of the root"},
        HostileRow{
            "LinkThenFileThroughIt",
            {{.path = "./way", .kind = Kind::link, .content = "../outside"}, {.path = "./way/file", .content = "x"}},
            "./way/file leads through a link"},
        HostileRow{
            "LinkThenFileFarBehindIt",
            {{.path = "way/", .kind = Kind::link, .content = "../outside"}, {.path = "./way/./a/b", .content = "x"}},
            "./way/./a/b leads through a link"}),
    [](const auto& row) { return row.param.name; });

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

TEST_F(UnpackTest, AFileInTheArchiveThatReplacesItsLinkStaysInside) {
  EXPECT_EQ(unpackOf({{.path = "./way", .kind = Kind::link, .content = "../outside/file"},
                      {.path = "./way", .content = "new"}})
                .problem,
            "");

  EXPECT_EQ(directory_.read("root/way"), "new");
  EXPECT_TRUE(outsideIsUntouched());
}

TEST_F(UnpackTest, ANamedPipeIsRefused) {
  EXPECT_EQ(unpack(oddArchive(S_IFIFO, 1, 1), root_).problem,
            "./odd0 is something else than a file, a folder or a symbolic link");

  EXPECT_TRUE(rootIsEmpty());
}

TEST_F(UnpackTest, ASecondNameOfAFileIsRefused) {
  EXPECT_EQ(unpack(oddArchive(S_IFREG, 2, 2), root_).problem,
            "./odd1 is something else than a file, a folder or a symbolic link");

  EXPECT_TRUE(rootIsEmpty());
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
