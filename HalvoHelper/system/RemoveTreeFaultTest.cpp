// What becomes of a tree when a system call fails in the middle of its removal, or when somebody works on it at the
// worst moment.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/RemoveTree.h"
#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/DeepTree.h"
#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class RemoveTreeFaultTest : public testing::Test {
 protected:
  // Five directories with a file each: whichever one is in trouble, there is one before it and one after it.
  std::string makeFive() const {
    for (const char* name : {"a", "b", "c", "d", "e"}) directory_.makeFile(std::string("tree/") + name + "/file");
    return directory_.path("tree");
  }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
};

// ---- Calls that fail

struct FailingCall {
  const char* name;
  const char* function;
  int call;
  std::size_t stay;  // how many of the five directories
};

class RemoveTreeWithFailingCall : public RemoveTreeFaultTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(RemoveTreeWithFailingCall, IsNotClaimedAndTheRestGoes) {
  const std::string tree = makeFive();

  const SystemCallFault fault(GetParam().function, EIO, GetParam().call, GetParam().call);
  EXPECT_FALSE(halvoRemoveTree(tree));

  EXPECT_THAT(fs_.entries(tree), SizeIs(GetParam().stay));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RemoveTreeWithFailingCall,
    testing::Values(
        FailingCall{"OpeningTheFolderAbove", "open", 1, 5}, FailingCall{"LookingAtTheTree", "fstatat", 1, 5},
        FailingCall{"OpeningTheTree", "openat", 1, 5}, FailingCall{"OpeningADirectory", "openat", 4, 1},
        FailingCall{"JudgingTheTree", "fstat", 1, 5}, FailingCall{"JudgingADirectory", "fstat", 4, 1},
        FailingCall{"DescriptorForListingTheTree", "fcntl", 1, 5},
        FailingCall{"DescriptorForListingADirectory", "fcntl", 4, 1}, FailingCall{"ListingTheTree", "fdopendir", 1, 5},
        FailingCall{"ListingADirectory", "fdopendir", 4, 1},
        // "." and ".." and what is in it, and once more for the end: 8 calls for the tree, 4 for the others.
        FailingCall{"FirstNameOfTheTree", "readdir", 1, 5}, FailingCall{"NameInTheTree", "readdir", 5, 5},
        FailingCall{"EndOfTheTree", "readdir", 8, 5}, FailingCall{"NameInADirectory", "readdir", 18, 1},
        FailingCall{"EndOfADirectory", "readdir", 20, 1}, FailingCall{"RemovingAFile", "unlinkat", 5, 1},
        FailingCall{"RemovingADirectory", "unlinkat", 6, 1}, FailingCall{"RemovingTheTree", "unlinkat", 11, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(RemoveTreeFaultTest, AFileThatCannotBeRemovedStaysWithTheDirectoriesAroundIt) {
  for (const char* name : {"a", "b", "c", "d", "e"}) directory_.makeFile(std::string("tree/inner/") + name);

  const SystemCallFault fault("unlinkat", EIO, 3, 3);
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_THAT(fs_.entries(directory_.path("tree/inner")), SizeIs(1));
}

TEST_F(RemoveTreeFaultTest, WhatAnEarlierEntryLeftInErrnoDoesNotCutTheListing) {
  const std::string tree = makeFive();

  const SystemCallHook stale("readdir", 1, [] { errno = EIO; });
  EXPECT_TRUE(halvoRemoveTree(tree));

  EXPECT_FALSE(isNamed(tree));
}

TEST_F(RemoveTreeFaultTest, OrdinaryItemsAreNeitherLookedAtNorOpened) {
  const std::string tree = directory_.makeDirectory("tree/inner");
  directory_.makeFile("tree/file");
  directory_.makeFile("tree/inner/file");
  const SystemCallFault opened("openat", EIO, 0, 0);
  const SystemCallFault looked("fstatat", EIO, 0, 0);
  const SystemCallFault judged("fstat", EIO, 0, 0);

  EXPECT_TRUE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_EQ(opened.calls(), 2) << "the two directories";
  EXPECT_EQ(looked.calls(), 1) << "the tree";
  EXPECT_EQ(judged.calls(), 2) << "the two directories";
}

TEST_F(RemoveTreeFaultTest, AFileIsRemovedWithoutBeingOpened) {
  const SystemCallFault opened("openat", EIO, 0, 0);

  EXPECT_TRUE(halvoRemoveTree(directory_.makeFile("file")));

  EXPECT_EQ(opened.calls(), 0);
}

// A directory above, which the caller vouches for, and the directories of the tree.
constexpr int kAbove = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr int kInside = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

TEST_F(RemoveTreeFaultTest, EveryDirectoryOfATreeIsOpenedWithEveryGuardThereIs) {
  directory_.makeDirectory("tree/inner");
  const NotedOpenings openings;

  EXPECT_TRUE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_THAT(openings.flags(), ElementsAre(kAbove, kInside, kInside));
}

TEST_F(RemoveTreeFaultTest, AnItemThatMayBeLockedIsOpenedItselfWithoutWaiting) {
  const std::string file = directory_.makeFile("file");
  const SystemCallFault locked("unlinkat", EPERM, 1);
  const NotedOpenings openings;

  EXPECT_FALSE(halvoRemoveTree(file));

  EXPECT_THAT(openings.flags(), Contains(O_RDONLY | O_SYMLINK | O_NONBLOCK | O_CLOEXEC));
}

// Another thread's file may have the number of a descriptor as soon as that is closed.
TEST_F(RemoveTreeFaultTest, NoDescriptorIsClosedTwice) {
  UniqueDescriptor strangers;

  const SystemCallHook open("close", 1, [&] { strangers = UniqueDescriptor(::open("/dev/null", O_RDONLY)); });
  EXPECT_TRUE(halvoRemoveTree(directory_.makeDirectory("tree")));

  EXPECT_TRUE(strangers.close());
}

TEST_F(RemoveTreeFaultTest, AToolThatIsStartedMeanwhileInheritsNoDirectory) {
  const std::vector<int> before = inheritableDescriptors();
  std::vector<int> meanwhile;

  const SystemCallHook tool("readdir", 1, [&] { meanwhile = inheritableDescriptors(); });
  EXPECT_TRUE(halvoRemoveTree(directory_.makeDirectory("tree")));

  EXPECT_EQ(meanwhile, before);
}

TEST_F(RemoveTreeFaultTest, AToolThatIsStartedBeforeTheListingInheritsNoDirectoryEither) {
  const std::vector<int> before = inheritableDescriptors();
  std::vector<int> meanwhile;

  const SystemCallHook tool("fdopendir", 1, [&] { meanwhile = inheritableDescriptors(); });
  EXPECT_TRUE(halvoRemoveTree(directory_.makeDirectory("tree")));

  EXPECT_EQ(meanwhile, before);
}

TEST_F(RemoveTreeFaultTest, AToolThatIsStartedMeanwhileInheritsNoItemThatMayBeLocked) {
  const std::vector<int> before = inheritableDescriptors();
  std::vector<int> meanwhile;

  const SystemCallFault locked("unlinkat", EPERM, 1);
  const SystemCallHook tool("close", 1, [&] { meanwhile = inheritableDescriptors(); });
  EXPECT_FALSE(halvoRemoveTree(directory_.makeFile("file")));

  EXPECT_EQ(meanwhile, before);
}

TEST_F(RemoveTreeFaultTest, AFifoThatTakesTheLockedItemsPlaceHoldsNobody) {
  const std::string file = directory_.makeFile("file");

  const SystemCallFault locked("unlinkat", EPERM, 1);
  const SystemCallHook swap("openat", 1, [&] {
    std::filesystem::remove(file);
    directory_.makeFifo("file");
  });
  EXPECT_FALSE(halvoRemoveTree(file));

  EXPECT_TRUE(std::filesystem::is_fifo(file));
}

TEST_F(RemoveTreeFaultTest, FlagsAreLookedAtOnlyWhereTheyMayBeTheReason) {
  directory_.makeFile("tree/file");

  const SystemCallFault fault("unlinkat", EIO);
  const SystemCallFault looked("fstatat", EIO, 0, 0);
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_EQ(looked.calls(), 1) << "the tree";
}

TEST_F(RemoveTreeFaultTest, AFifoThatMayBeLockedIsNotOpened) {
  directory_.makeFifo("tree/fifo");

  const SystemCallFault locked("unlinkat", EPERM, 1);
  const SystemCallFault opened("openat", EIO, 0, 0);
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_EQ(opened.calls(), 2) << "the tree, and the FIFO only as a directory";
}

TEST_F(RemoveTreeFaultTest, ARefusalThatNoFlagExplainsIsNotTriedAgain) {
  directory_.makeFile("tree/file");

  const SystemCallFault refused("unlinkat", EPERM, 1);
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_EQ(refused.calls(), 1);
}

TEST_F(RemoveTreeFaultTest, ARefusedItemThatCannotBeJudgedIsNotTriedAgain) {
  directory_.makeFile("tree/file");

  const SystemCallFault refused("unlinkat", EPERM, 1);
  const SystemCallFault unknown("fstatat", EIO, 2, 2);
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_EQ(unknown.calls(), 2) << "the tree, and the item";
  EXPECT_EQ(refused.calls(), 1);
}

// ---- Entries that vanish

struct Moment {
  const char* name;
  const char* function;
  int call;
};

class RemoveVanishingTree : public RemoveTreeFaultTest, public testing::WithParamInterface<Moment> {};

TEST_P(RemoveVanishingTree, SucceedsAndTheRestGoes) {
  directory_.makeFile("tree/inner/file");
  const std::string tree = directory_.path("tree");
  bool vanished = false;

  const SystemCallHook removed(GetParam().function, GetParam().call,
                               [&] { vanished = std::filesystem::remove_all(tree + "/inner") > 0; });
  EXPECT_TRUE(halvoRemoveTree(tree));

  EXPECT_TRUE(vanished);
  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, RemoveVanishingTree,
                         testing::Values(Moment{"BeforeADirectoryIsOpened", "openat", 2},
                                         Moment{"BeforeAFileIsRemoved", "unlinkat", 1},
                                         Moment{"BeforeADirectoryIsRemoved", "unlinkat", 2}),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- Entries that become something else

TEST_F(RemoveTreeFaultTest, ADirectoryThatHasBecomeAFileGoes) {
  const std::string entry = directory_.makeDirectory("tree/entry");

  const SystemCallHook replaced("openat", 2, [&] {
    std::filesystem::remove(entry);
    directory_.makeFile("tree/entry");
  });
  EXPECT_TRUE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

TEST_F(RemoveTreeFaultTest, AFileThatHasBecomeADirectoryGoesWithWhatIsInIt) {
  const std::string entry = directory_.makeFile("tree/entry");

  const SystemCallHook replaced("unlinkat", 1, [&] {
    std::filesystem::remove(entry);
    directory_.makeFile("tree/entry/file");
  });
  EXPECT_TRUE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_THAT(fs_.entries(directory_.path()), IsEmpty());
}

// ---- Links that are swapped in

// Before the n-th call of a function. What the walk comes to has the same names outside.
class RemoveTreeWithSwappedLink : public RemoveTreeFaultTest,
                                  public testing::WithParamInterface<std::tuple<const char*, int>> {};

TEST_P(RemoveTreeWithSwappedLink, NeverLeadsOutside) {
  const std::string outer = directory_.makeFile("outside/file");
  const std::string inner = directory_.makeFile("outside/inner/file");
  directory_.makeFile("tree/victim/file");
  directory_.makeFile("tree/victim/inner/file");
  const std::string victim = directory_.path("tree/victim");
  bool swapped = false;

  const SystemCallHook swap(std::get<0>(GetParam()), std::get<1>(GetParam()), [&] {
    std::filesystem::rename(victim, directory_.path("aside"));
    std::filesystem::create_symlink(directory_.path("outside"), victim);
    swapped = true;
  });
  static_cast<void>(halvoRemoveTree(directory_.path("tree")));

  EXPECT_TRUE(swapped);
  EXPECT_TRUE(isNamed(outer));
  EXPECT_TRUE(isNamed(inner));
}

const auto momentName = [](const auto& row) { return std::get<0>(row.param) + std::to_string(std::get<1>(row.param)); };
// Every call of the walk up to the removal of the victim.
INSTANTIATE_TEST_SUITE_P(Openat, RemoveTreeWithSwappedLink,
                         testing::Combine(testing::Values("openat"), testing::Range(1, 4)), momentName);
INSTANTIATE_TEST_SUITE_P(Fstat, RemoveTreeWithSwappedLink,
                         testing::Combine(testing::Values("fstat", "fcntl", "fdopendir"), testing::Range(1, 4)),
                         momentName);
INSTANTIATE_TEST_SUITE_P(Readdir, RemoveTreeWithSwappedLink,
                         testing::Combine(testing::Values("readdir"), testing::Range(1, 14)), momentName);
INSTANTIATE_TEST_SUITE_P(Unlinkat, RemoveTreeWithSwappedLink,
                         testing::Combine(testing::Values("unlinkat"), testing::Range(1, 5)), momentName);

// ---- Directories that are moved away

// Deeper than directories are kept open: going up starts with "..", the 25th opening.
class RemoveMovedTree : public RemoveTreeFaultTest {
 protected:
  static constexpr int kLevels = 23;
  static constexpr int kFirstWayUp = kLevels + 2;

  RemoveMovedTree() {
    directory_.makeDirectory("tree");
    makeChain(directory_.path("tree"), "d", kLevels);
  }
};

TEST_F(RemoveMovedTree, ADirectoryThatWasMovedOutLeadsNowhere) {
  const std::string canary = directory_.makeDirectory("outside/d");
  bool moved = false;

  const SystemCallHook move("openat", kFirstWayUp, [&] {
    std::filesystem::rename(directory_.path("tree/d/d/d/d/d/d/d/d"), directory_.path("outside/moved"));
    moved = true;
  });
  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_TRUE(moved);
  EXPECT_TRUE(isNamed(canary));
  EXPECT_THAT(fs_.entries(directory_.path("outside/moved")), IsEmpty());
  EXPECT_THAT(fs_.entries(directory_.path("tree/d/d/d/d/d/d")), UnorderedElementsAre("d"));
}

struct WayUp {
  const char* name;
  const char* function;
};

class RemoveTreeWithoutWayUp : public RemoveMovedTree, public testing::WithParamInterface<WayUp> {};

TEST_P(RemoveTreeWithoutWayUp, EndsThereAndClaimsNothing) {
  const SystemCallFault fault(GetParam().function, EIO, kFirstWayUp, kFirstWayUp);

  EXPECT_FALSE(halvoRemoveTree(directory_.path("tree")));

  EXPECT_TRUE(isNamed(directory_.path("tree/d/d/d/d/d/d/d/d")));
}

INSTANTIATE_TEST_SUITE_P(Table, RemoveTreeWithoutWayUp,
                         testing::Values(WayUp{"NotOpened", "openat"}, WayUp{"NotJudged", "fstat"}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
