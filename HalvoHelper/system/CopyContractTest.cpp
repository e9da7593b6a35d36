// What every privileged file system promises of copies: held by the real one and by the one in memory.
#include "HalvoHelper/testing/PrivilegedFSContract.h"

namespace halvo {
namespace {

using testing::ElementsAre;

using CopyContractTest = PrivilegedFSContract;

INSTANTIATE_TEST_SUITE_P(On, CopyContractTest, kTreeKinds, treeKindName);

TEST_P(CopyContractTest, CopyTreeCopiesATree) {
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/copy"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
}

TEST_P(CopyContractTest, CopyTreeCopiesAFileAndAnEmptyDirectory) {
  fs_->makeDir("/t/empty");

  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/copy"));
  EXPECT_TRUE(fs_->copyTree("/t/empty", "/t/empty-copy"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("=f"));
  EXPECT_THAT(listing("/t/empty-copy"), ElementsAre("/"));
}

TEST_P(CopyContractTest, CopyTreeIgnoresSlashesBehindDirectories) {
  EXPECT_TRUE(fs_->copyTree("/t/tree/", "/t/copy//"));

  EXPECT_THAT(listing("/t/copy"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
}

TEST_P(CopyContractTest, CopyTreeMakesTheDirectoriesAbove) {
  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/x/y/copy"));

  EXPECT_THAT(listing("/t/x"), ElementsAre("/", "/y/", "/y/copy=f"));
}

TEST_P(CopyContractTest, CopyTreeReplacesWhateverIsThere) {
  tree_->write("/t/other/stale", "old");
  tree_->write("/t/other-file", "old");

  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/other"));
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/other-file"));
  EXPECT_TRUE(fs_->copyTree("/t/file", "/t/tree"));

  EXPECT_THAT(listing("/t/other"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/other-file"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2"));
  EXPECT_THAT(listing("/t/tree"), ElementsAre("=f"));
}

TEST_P(CopyContractTest, CopyTreeOfWhatIsNotThereFailsWithTheDestinationGone) {
  EXPECT_FALSE(fs_->copyTree("/t/absent", "/t/file"));
  EXPECT_FALSE(fs_->copyTree("/t/tree/a/below", "/t/x/copy"));
  EXPECT_FALSE(fs_->copyTree("", "/t/copy"));

  EXPECT_THAT(listing(), ElementsAre("/", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2", "/x/"));
}

TEST_P(CopyContractTest, CopyTreeFailsWhereNothingCanBe) {
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/x/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/file/"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", ""));

  EXPECT_THAT(listing(), isUntouched());
}

TEST_P(CopyContractTest, CopyTreeOntoItselfRemovesItFirst) {
  EXPECT_FALSE(fs_->copyTree("/t/file", "/t/file"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/"));

  EXPECT_THAT(listing(), ElementsAre("/"));
}

TEST_P(CopyContractTest, CopyTreeOverADirectoryAboveItRemovesItFirst) {
  EXPECT_FALSE(fs_->copyTree("/t/tree/sub", "/t/tree"));

  EXPECT_THAT(listing(), ElementsAre("/", "/file=f"));
}

TEST_P(CopyContractTest, CopyTreeIntoItselfFails) {
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree/", "/t/tree/x/copy"));
  EXPECT_FALSE(fs_->copyTree("/t/tree", "/t/tree/a"));
  EXPECT_TRUE(fs_->copyTree("/t/tree", "/t/tree-beside"));

  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/sub/", "/sub/b=2", "/x/"));
}

TEST_P(CopyContractTest, StageFileCopiesAFile) {
  EXPECT_TRUE(fs_->stageFile("/t/file", "/t/tree/staged"));

  EXPECT_THAT(listing(),
              ElementsAre("/", "/file=f", "/tree/", "/tree/a=1", "/tree/staged=f", "/tree/sub/", "/tree/sub/b=2"));
}

TEST_P(CopyContractTest, StageFileTakesNothingButAFile) {
  EXPECT_FALSE(fs_->stageFile("/t/tree", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/absent", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file/", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file/below", "/t/staged"));
  EXPECT_FALSE(fs_->stageFile("", "/t/staged"));

  EXPECT_THAT(listing(), isUntouched());
}

TEST_P(CopyContractTest, StageFileReplacesNothingAndMakesNoDirectory) {
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree/a"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/file"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/absent/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/tree/a/staged"));
  EXPECT_FALSE(fs_->stageFile("/t/file", "/t/staged/"));
  EXPECT_FALSE(fs_->stageFile("/t/file", ""));

  EXPECT_THAT(listing(), isUntouched());
}

TEST_P(CopyContractTest, ACopyIsAsOldAsWhatItWasMadeOf) {
  tree_->setDaysAgo("/t/tree/sub/b", 30);
  tree_->setDaysAgo("/t/tree", 20);

  ASSERT_TRUE(fs_->copyTree("/t/tree", "/t/copy"));

  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy"), 20);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy/sub/b"), 30);
  EXPECT_EQ(fs_->modifiedDaysAgo("/t/copy/a"), 0);
}

}  // namespace
}  // namespace halvo
