// What every privileged file system promises: held by the real one and by the one in memory on which recovery is
// tested.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "HalvoHelper/testing/FileTree.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct TreeRow {
  const char* name;
  std::function<std::shared_ptr<const FileTree>(const std::string& directory)> make;
};
void PrintTo(const TreeRow& row, std::ostream* out) { *out << row.name; }

// Everything happens below /t, where there are a file and a tree of two levels.
class PrivilegedFSContractTest : public testing::TestWithParam<TreeRow> {
 protected:
  void SetUp() override {
    tree_->write("/t/file", "f");
    tree_->write("/t/tree/a", "1");
    tree_->write("/t/tree/sub/b", "2");
  }

  [[nodiscard]] std::vector<std::string> listing(const std::string& path = "/t") const { return tree_->listing(path); }

  TemporaryDirectory directory_;
  std::shared_ptr<const FileTree> tree_ = GetParam().make(directory_.path());
  std::shared_ptr<const PrivilegedFS> fs_ = tree_->fs();
};

INSTANTIATE_TEST_SUITE_P(
    Of, PrivilegedFSContractTest,
    testing::Values(TreeRow{"Memory", [](const auto&) { return std::make_shared<InMemoryTree>(); }},
                    TreeRow{"Disk", [](const auto& path) { return std::make_shared<DiskTree>(path); }}),
    [](const auto& row) { return row.param.name; });

const auto kUntouched = ElementsAre("/", "/file=f", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2");

TEST_P(PrivilegedFSContractTest, FilesAndDirectoriesExist) {
  EXPECT_TRUE(fs_->exists("/t/file"));
  EXPECT_TRUE(fs_->exists("/t/tree"));
  EXPECT_TRUE(fs_->exists("/t/tree/"));
  EXPECT_TRUE(fs_->exists("/"));
}

TEST_P(PrivilegedFSContractTest, NothingElseExists) {
  EXPECT_FALSE(fs_->exists("/t/absent"));
  EXPECT_FALSE(fs_->exists("/t/fil"));
  EXPECT_FALSE(fs_->exists("/t/file/below"));
  EXPECT_FALSE(fs_->exists("/t/file/"));
  EXPECT_FALSE(fs_->exists(""));
}

TEST_P(PrivilegedFSContractTest, RemoveTakesOneFile) {
  EXPECT_TRUE(fs_->remove("/t/tree/a"));

  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/sub/", "/sub/b=2"));
}

TEST_P(PrivilegedFSContractTest, RemoveCountsWhatIsNotThereAsRemoved) {
  EXPECT_TRUE(fs_->remove("/t/absent"));
  EXPECT_TRUE(fs_->remove("/t/absent/below"));
  EXPECT_TRUE(fs_->remove(""));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, RemoveRefusesADirectoryAndAnythingBelowAFile) {
  EXPECT_TRUE(fs_->makeDir("/t/empty"));

  EXPECT_FALSE(fs_->remove("/t/empty"));
  EXPECT_FALSE(fs_->remove("/t/tree"));
  EXPECT_FALSE(fs_->remove("/t/tree/"));
  EXPECT_FALSE(fs_->remove("/t/file/below"));
  EXPECT_FALSE(fs_->remove("/t/file/"));

  EXPECT_THAT(listing(), ElementsAre("/", "/empty/", "/file=f", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2"));
}

TEST_P(PrivilegedFSContractTest, RemoveTreeTakesWhatIsThereWithEverythingBelow) {
  tree_->write("/t/tree-beside", "3");

  EXPECT_TRUE(fs_->removeTree("/t/tree"));
  EXPECT_TRUE(fs_->removeTree("/t/file"));

  EXPECT_THAT(listing(), ElementsAre("/", "/tree-beside=3"));
}

TEST_P(PrivilegedFSContractTest, RemoveTreeIgnoresSlashesBehindADirectory) {
  EXPECT_TRUE(fs_->removeTree("/t/tree//"));

  EXPECT_THAT(listing(), ElementsAre("/", "/file=f"));
}

TEST_P(PrivilegedFSContractTest, RemoveTreeSucceedsWhereNothingIs) {
  EXPECT_TRUE(fs_->removeTree("/t/absent"));
  EXPECT_TRUE(fs_->removeTree("/t/file/below"));
  EXPECT_TRUE(fs_->removeTree("/t/file/"));
  EXPECT_TRUE(fs_->removeTree(""));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, CopyTreeCopiesATree) {
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/copy"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeCopiesAFileAndAnEmptyDirectory) {
  fs_->makeDir("/t/empty");

  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/copy"));
  EXPECT_TRUE(fs_->copyTree("/t/empty", "/t/empty-copy"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("=f"));
  EXPECT_THAT(listing("/t/empty-copy"), ElementsAre("/"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeIgnoresSlashesBehindDirectories) {
  EXPECT_TRUE(fs_->copyTree("/t/tree/", "/t/copy//"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeMakesTheDirectoriesAbove) {
  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/x/y/copy"));

  EXPECT_THAT(listing("/t/x"), ElementsAre("/", "/y/", "/y/copy=f"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeReplacesWhateverIsThere) {
  tree_->write("/t/other/stale", "old");
  tree_->write("/t/other-file", "old");

  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/other"));
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/other-file"));
  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/tree"));

  EXPECT_THAT(listing("/t/other"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/other-file"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/tree"), ElementsAre("=f"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeOfWhatIsNotThereFailsWithTheDestinationGone) {
  EXPECT_FALSE(fs_->copyTree("/t/absent", "/t/file"));
  EXPECT_FALSE(fs_->copyTree("/t/tree/a/below", "/t/x/copy"));
  EXPECT_FALSE(fs_->copyTree("", "/t/copy"));

  EXPECT_THAT(listing(), ElementsAre("/", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2", "/x/"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeFailsWhereNothingCanBe) {
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/x/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", ""));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, CopyTreeOntoItselfRemovesItFirst) {
  EXPECT_FALSE(fs_->copyTree("/t/file", "/t/file"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/"));

  EXPECT_THAT(listing(), ElementsAre("/"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeOverADirectoryAboveItRemovesItFirst) {
  EXPECT_FALSE(fs_->copyTree("/t/tree/sub", "/t/tree"));

  EXPECT_THAT(listing(), ElementsAre("/", "/file=f"));
}

TEST_P(PrivilegedFSContractTest, CopyTreeIntoItselfFails) {
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree/", "/t/tree/x/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/a"));
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/tree-beside"));

  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/sub/", "/sub/b=2", "/x/"));
}

TEST_P(PrivilegedFSContractTest, StageFileCopiesAFile) {
  EXPECT_TRUE(fs_->stageFile("/t/file", "/t/tree/staged"));

  EXPECT_THAT(listing(),
              ElementsAre("/", "/file=f", "/tree/", "/tree/a=1", "/tree/staged=f", "/tree/sub/", "/tree/sub/b=2"));
}

TEST_P(PrivilegedFSContractTest, StageFileTakesNothingButAFile) {
  EXPECT_FALSE(fs_->stageFile("/t/tree", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/absent", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file/", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file/below", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("", "/t/staged"));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, StageFileReplacesNothingAndMakesNoDirectory) {
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree/a"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/file"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/absent/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree/a/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/staged/"));
  EXPECT_FALSE(fs_->stageFile("/t/file", ""));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, MakeDirMakesTheDirectoriesAbove) {
  EXPECT_TRUE(fs_->makeDir("/t/tree/x/y/"));

  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2", "/x/", "/x/y/"));
}

TEST_P(PrivilegedFSContractTest, MakeDirSucceedsForWhateverIsThere) {
  EXPECT_TRUE(fs_->makeDir("/t/tree"));
  EXPECT_TRUE(fs_->makeDir("/t/file"));
  EXPECT_TRUE(fs_->makeDir("/"));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, MakeDirFailsWhereNothingCanBe) {
  EXPECT_FALSE(fs_->makeDir("/t/file/below"));
  EXPECT_FALSE(fs_->makeDir("/t/file/x/y"));
  EXPECT_FALSE(fs_->makeDir(""));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, MakePrivateDirMakesTheDirectoriesAboveAndTakesAnExistingOne) {
  EXPECT_TRUE(fs_->makePrivateDir("/t/x/y", 0700));
  EXPECT_TRUE(fs_->makePrivateDir("/t/tree/sub/", 0700));

  EXPECT_THAT(listing(),
              ElementsAre("/", "/file=f", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2", "/x/", "/x/y/"));
}

TEST_P(PrivilegedFSContractTest, MakePrivateDirFailsWhereAFileIs) {
  EXPECT_FALSE(fs_->makePrivateDir("/t/file", 0700));
  EXPECT_FALSE(fs_->makePrivateDir("/t/file/below", 0700));
  EXPECT_FALSE(fs_->makePrivateDir("/t/file/x/y", 0700));
  EXPECT_FALSE(fs_->makePrivateDir("", 0700));

  EXPECT_THAT(listing(), kUntouched);
}

TEST_P(PrivilegedFSContractTest, EntriesAreTheNamesOfTheNextLevel) {
  tree_->write("/t/.hidden", "");

  EXPECT_THAT(fs_->entries("/t"), UnorderedElementsAre("file", "tree", ".hidden"));
  EXPECT_THAT(fs_->entries("/t/tree//"), UnorderedElementsAre("a", "sub"));
}

TEST_P(PrivilegedFSContractTest, WhatIsNoDirectoryHasNoEntries) {
  EXPECT_THAT(fs_->entries("/t/file"), IsEmpty());
  EXPECT_THAT(fs_->entries("/t/absent"), IsEmpty());
  EXPECT_THAT(fs_->entries("/t/file/below"), IsEmpty());
  EXPECT_THAT(fs_->entries(""), IsEmpty());
}

TEST_P(PrivilegedFSContractTest, WhatIsMadeIsNewAndWhatIsNotThereHasNoAge) {
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/file"), 0);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/tree/"), 0);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/absent"), std::nullopt);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/file/"), std::nullopt);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/file/below"), std::nullopt);
  EXPECT_EQ(fs_->modifiedDaysAgo(""), std::nullopt);
}

TEST_P(PrivilegedFSContractTest, ACopyIsAsOldAsWhatItWasMadeOf) {
  tree_->setDaysAgo("/t/tree/sub/b", 30);
  tree_->setDaysAgo("/t/tree", 20);

  ASSERT_TRUE(fs_->copyTree("/t/tree", "/t/copy"));

  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy"), 20);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy/sub/b"), 30);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy/a"), 0);
}

TEST_P(PrivilegedFSContractTest, AnEntryThatComesOrGoesMakesItsDirectoryNew) {
  tree_->setDaysAgo("/t/tree", 20);
  tree_->setDaysAgo("/t/tree/sub", 20);
  tree_->setDaysAgo("/t", 20);

  ASSERT_TRUE(fs_->copyTree("/t/file", "/t/tree/copy"));
  ASSERT_TRUE(fs_->remove("/t/tree/sub/b"));

  EXPECT_EQ(fs_->modifiedDaysAgo("/t/tree"), 0);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/tree/sub"), 0);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t"), 20);
}

TEST_P(PrivilegedFSContractTest, WhatIsRemovedAndMadeAgainIsNew) {
  tree_->setDaysAgo("/t/tree", 20);
  tree_->setDaysAgo("/t/file", 20);

  fs_->removeTree("/t/tree");
  fs_->makeDir("/t/tree");
  fs_->removeTree("/t/file");
  tree_->write("/t/file", "again");

  EXPECT_EQ(fs_->modifiedDaysAgo("/t/tree"), 0);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/file"), 0);
}

}  // namespace
}  // namespace halvo
