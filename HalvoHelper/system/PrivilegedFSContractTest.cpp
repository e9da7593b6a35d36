// What every privileged file system promises but for copies: held by the real one and by the one in memory on which
// recovery is tested.
#include "HalvoHelper/testing/PrivilegedFSContract.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using PrivilegedFSContractTest = PrivilegedFSContract;

INSTANTIATE_TEST_SUITE_P(On, PrivilegedFSContractTest, kTreeKinds, treeKindName);

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

  EXPECT_THAT(listing(), isUntouched());
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

  EXPECT_THAT(listing(), isUntouched());
}

TEST_P(PrivilegedFSContractTest, MakeDirMakesTheDirectoriesAbove) {
  EXPECT_TRUE(fs_->makeDir("/t/tree/x/y/"));

  EXPECT_THAT(listing("/t/tree"), ElementsAre("/", "/a=1", "/sub/", "/sub/b=2", "/x/", "/x/y/"));
}

TEST_P(PrivilegedFSContractTest, MakeDirSucceedsForWhateverIsThere) {
  EXPECT_TRUE(fs_->makeDir("/t/tree"));
  EXPECT_TRUE(fs_->makeDir("/t/file"));
  EXPECT_TRUE(fs_->makeDir("/"));

  EXPECT_THAT(listing(), isUntouched());
}

TEST_P(PrivilegedFSContractTest, MakeDirFailsWhereNothingCanBe) {
  EXPECT_FALSE(fs_->makeDir("/t/file/below"));
  EXPECT_FALSE(fs_->makeDir("/t/file/x/y"));
  EXPECT_FALSE(fs_->makeDir(""));

  EXPECT_THAT(listing(), isUntouched());
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

  EXPECT_THAT(listing(), isUntouched());
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
