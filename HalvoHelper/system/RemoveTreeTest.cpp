#include "HalvoHelper/system/RemoveTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "HalvoHelper/testing/TreeSwapper.h"

namespace halvo {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RemoveTreeTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
};

TEST_F(RemoveTreeTest, RemovesAWholeTree) {
  directory_.makeFile("tree/a/b/c/file");
  directory_.makeFile("tree/.hidden");
  directory_.makeDirectory("tree/empty");
  directory_.makeFifo("tree/fifo");

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

TEST_F(RemoveTreeTest, RemovesWhatIsNoDirectoryToo) {
  EXPECT_TRUE(fs_.removeTree(directory_.makeFile("file")));
  EXPECT_TRUE(fs_.removeTree(directory_.makeFifo("fifo")));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

TEST_F(RemoveTreeTest, AnAbsentPathSucceedsAndTouchesNothing) {
  directory_.makeFile("other");

  EXPECT_TRUE(fs_.removeTree(directory_.path("absent")));
  EXPECT_TRUE(fs_.removeTree(directory_.path("absent/below")));
  EXPECT_TRUE(fs_.removeTree(""));

  EXPECT_THAT(fs_.entries(directory_.path()), UnorderedElementsAre("other"));
}

TEST_F(RemoveTreeTest, ADanglingLinkCountsAsAbsentAndStays) {
  const std::string dangling = directory_.makeLink("dangling", "/no/such/file");

  EXPECT_TRUE(fs_.removeTree(dangling));

  EXPECT_TRUE(isNamed(dangling));
}

TEST_F(RemoveTreeTest, ALinkToADirectoryIsRemovedItself) {
  directory_.makeFile("target/kept");
  const std::string link = directory_.makeLink("link", directory_.path("target"));

  EXPECT_TRUE(fs_.removeTree(link));

  EXPECT_FALSE(isNamed(link));
  EXPECT_TRUE(isNamed(directory_.path("target/kept")));
}

TEST_F(RemoveTreeTest, ATrailingSlashDoesNotLeadThroughALink) {
  directory_.makeFile("target/kept");
  const std::string link = directory_.makeLink("link", directory_.path("target"));

  EXPECT_TRUE(fs_.removeTree(link + "//"));

  EXPECT_FALSE(isNamed(link));
  EXPECT_TRUE(isNamed(directory_.path("target/kept")));
}

TEST_F(RemoveTreeTest, LinksInsideAreRemovedAndNotFollowed) {
  directory_.makeFile("outside/kept");
  directory_.makeLink("tree/a/link", directory_.path("outside"));
  directory_.makeLink("tree/file-link", directory_.path("outside/kept"));
  directory_.makeLink("tree/dangling", "/no/such/file");

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
  EXPECT_TRUE(isNamed(directory_.path("outside/kept")));
}

TEST_F(RemoveTreeTest, ATrailingSlashOnADirectoryIsIgnored) {
  directory_.makeFile("tree/file");

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree") + "/"));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
}

TEST_F(RemoveTreeTest, ADirectoryWithVeryManyEntriesGoes) {
  makeManyFiles(directory_.makeDirectory("tree"), 1'500);

  EXPECT_TRUE(fs_.removeTree(directory_.path("tree")));

  EXPECT_FALSE(isNamed(directory_.path("tree")));
}

TEST_F(RemoveTreeTest, WithoutDescriptorsNothingIsRemovedAndNothingClaimed) {
  directory_.makeFile("tree/file");
  const std::string tree = directory_.path("tree");

  const bool removed = [&] {
    const NoFreeDescriptors full;
    return halvoRemoveTree(tree);
  }();

  EXPECT_FALSE(removed);
  EXPECT_TRUE(isNamed(directory_.path("tree/file")));
}

TEST_F(RemoveTreeTest, AbsenceIsSuccessForTheWalkItself) {
  EXPECT_TRUE(halvoRemoveTree(directory_.path("absent")));
  EXPECT_FALSE(halvoRemoveTree(directory_.path("absent/below")));
}

TEST_F(RemoveTreeTest, ADanglingLinkIsAnItemForTheWalkItself) {
  const std::string dangling = directory_.makeLink("dangling", "/no/such/file");

  EXPECT_TRUE(halvoRemoveTree(dangling));

  EXPECT_FALSE(isNamed(dangling));
}

TEST_F(RemoveTreeTest, TwoRemovalsOfOneTreeDoNotDisturbEachOther) {
  const std::string tree = directory_.makeDirectory("tree");
  makeManyFiles(tree, 500);

  onThreads(4, 1, [&](const std::string&) { return fs_.removeTree(tree) ? "true" : "false"; });

  EXPECT_FALSE(isNamed(tree));
}

TEST_F(RemoveTreeTest, ALinkSwappedInWhileItRunsNeverLeadsOutside) {
  const SwapOutcome outcome =
      removeWhileSwapping(directory_, 40, [&](const std::string& tree) { fs_.removeTree(tree); });

  EXPECT_EQ(outcome.roundsThatReachedOutside, 0);
  EXPECT_EQ(outcome.swaps, 40) << "the attacker hardly ever came in time";
}

// Removal on a machine with a file system of its own mounted inside the tree.
class RemoveTreeAcrossMountTest : public RemoveTreeTest {
 protected:
  void SetUp() override {
    const ProcessResult probe = RealProcessRunner().run("/usr/bin/unshare", {"-m", "/bin/sh", "-c", mountCommand()});
    if (probe.code != 0) GTEST_SKIP() << "this process may not mount file systems: " << probe.output;
  }

  std::string mountCommand() const { return mountCommand("tree/mounted"); }
  std::string mountCommand(const std::string& name) const {
    return "mount -t tmpfs -o size=1m none '" + directory_.makeDirectory(name) + "'";
  }

  // What is left in a mounted file system with one file after the tree around it was removed, behind the answer.
  std::string removeAround(const std::string& name) const {
    const std::string mounted = directory_.path(name);
    const std::string script = mountCommand(name) + " && touch '" + mounted + "/kept' && '" + HALVO_FILE_PROBE +
                               "' remove-tree '" + directory_.path("tree") + "' && echo && ls '" + mounted + "'";
    return RealProcessRunner().run("/usr/bin/unshare", {"-m", "/bin/sh", "-c", script}).output;
  }
};

TEST_F(RemoveTreeAcrossMountTest, AnotherFileSystemIsNotEntered) {
  directory_.makeFile("tree/beside");

  EXPECT_EQ(removeAround("tree/mounted"), "false\nkept\n");

  EXPECT_FALSE(isNamed(directory_.path("tree/beside")));
  EXPECT_TRUE(isNamed(directory_.path("tree/mounted")));
}

TEST_F(RemoveTreeAcrossMountTest, AnotherFileSystemFarBelowIsNotEnteredAndTheRestGoes) {
  const std::string deep = "tree/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/18/19/20";
  directory_.makeFile("tree/beside");
  directory_.makeFile(deep + "/beside");

  EXPECT_EQ(removeAround(deep + "/mounted"), "false\nkept\n");

  EXPECT_FALSE(isNamed(directory_.path("tree/beside")));
  EXPECT_THAT(fs_.entries(directory_.path(deep)), UnorderedElementsAre("mounted"));
}

TEST_F(RemoveTreeAcrossMountTest, AStagedCopyThatDoesNotFitLeavesNothing) {
  const std::string mounted = directory_.path("tree/mounted");
  const std::string source = directory_.makeSparseFile("source", 3'000'000);
  const std::string script = mountCommand() + " && '" + HALVO_FILE_PROBE + "' stage-file '" + source + "' '" + mounted +
                             "/staged' && echo && ls -A '" + mounted + "'";

  EXPECT_EQ(RealProcessRunner().run("/usr/bin/unshare", {"-m", "/bin/sh", "-c", script}).output, "false\n");
}

}  // namespace
}  // namespace halvo
