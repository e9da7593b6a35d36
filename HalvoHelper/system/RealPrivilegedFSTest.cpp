#include "HalvoHelper/system/RealPrivilegedFS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RealPrivilegedFSTest : public testing::Test {
 protected:
  // A path that the kernel would read as `shown`.
  static std::string withHiddenEnd(const std::string& shown) { return shown + '\0' + "/elsewhere"; }

  TemporaryDirectory directory_;
  RealPrivilegedFS fs_;
};

TEST_F(RealPrivilegedFSTest, FilesAndDirectoriesExist) {
  EXPECT_TRUE(fs_.exists(directory_.path()));
  EXPECT_TRUE(fs_.exists(directory_.makeFile("file")));
  EXPECT_TRUE(fs_.exists(directory_.makeFifo("fifo")));
}

TEST_F(RealPrivilegedFSTest, WhatIsNotThereDoesNotExist) {
  EXPECT_FALSE(fs_.exists(directory_.path("absent")));
  EXPECT_FALSE(fs_.exists(directory_.makeFile("file") + "/below"));
  EXPECT_FALSE(fs_.exists(""));
}

TEST_F(RealPrivilegedFSTest, ALinkExistsWhenItsTargetDoes) {
  EXPECT_TRUE(fs_.exists(directory_.makeLink("good", directory_.path())));
  EXPECT_FALSE(fs_.exists(directory_.makeLink("dangling", directory_.path("absent"))));
}

TEST_F(RealPrivilegedFSTest, RemovesAFile) {
  const std::string file = directory_.makeFile("file");

  EXPECT_TRUE(fs_.remove(file));

  EXPECT_FALSE(isNamed(file));
}

TEST_F(RealPrivilegedFSTest, RemovingWhatIsAlreadyGoneSucceeds) {
  EXPECT_TRUE(fs_.remove(directory_.path("absent")));
  EXPECT_TRUE(fs_.remove(directory_.path("absent/below")));
}

TEST_F(RealPrivilegedFSTest, RemoveRefusesADirectory) {
  const std::string empty = directory_.makeDirectory("empty");

  EXPECT_FALSE(fs_.remove(empty));

  EXPECT_TRUE(isNamed(empty));
}

TEST_F(RealPrivilegedFSTest, RemoveTakesALinkAndLeavesItsTarget) {
  const std::string target = directory_.makeFile("target");
  const std::string link = directory_.makeLink("link", target);
  const std::string dangling = directory_.makeLink("dangling", "/no/such/file");

  EXPECT_TRUE(fs_.remove(link));
  EXPECT_TRUE(fs_.remove(dangling));

  EXPECT_FALSE(isNamed(link));
  EXPECT_FALSE(isNamed(dangling));
  EXPECT_TRUE(isNamed(target));
}

TEST_F(RealPrivilegedFSTest, RemoveFailsWhenAFileStandsInThePath) {
  EXPECT_FALSE(fs_.remove(directory_.makeFile("file") + "/below"));
}

TEST_F(RealPrivilegedFSTest, MakeDirMakesTheDirectoriesAboveToo) {
  EXPECT_TRUE(fs_.makeDir(directory_.path("a/b/c")));

  EXPECT_TRUE(std::filesystem::is_directory(directory_.path("a/b/c")));
}

TEST_F(RealPrivilegedFSTest, MakeDirSucceedsForWhateverIsThereAlready) {
  EXPECT_TRUE(fs_.makeDir(directory_.path()));
  EXPECT_TRUE(fs_.makeDir(directory_.makeFile("file", "kept")));

  EXPECT_EQ(contentsOf(directory_.path("file")), "kept");
}

TEST_F(RealPrivilegedFSTest, MakeDirFailsWhereNothingCanBe) {
  EXPECT_FALSE(fs_.makeDir(directory_.makeFile("file") + "/below"));
  EXPECT_FALSE(fs_.makeDir(directory_.makeLink("dangling", "/no/such/place")));
  EXPECT_FALSE(fs_.makeDir(""));
}

TEST_F(RealPrivilegedFSTest, MakeDirLeavesTheDefaultPermissions) {
  const ScopedUmask umask(022);

  fs_.makeDir(directory_.path("plain"));

  EXPECT_EQ(permissionsOf(directory_.path("plain")), 0755U);
}

TEST_F(RealPrivilegedFSTest, EntriesAreNamesWithHiddenOnes) {
  directory_.makeFile("file");
  directory_.makeFile(".hidden");
  directory_.makeFile("directory/not-immediate");
  directory_.makeLink("dangling", "/no/such/file");

  EXPECT_THAT(fs_.entries(directory_.path()), UnorderedElementsAre("file", ".hidden", "directory", "dangling"));
}

TEST_F(RealPrivilegedFSTest, EntriesThroughALinkAreThoseOfItsTarget) {
  directory_.makeFile("real/file");

  EXPECT_THAT(fs_.entries(directory_.makeLink("link", directory_.path("real"))), UnorderedElementsAre("file"));
}

TEST_F(RealPrivilegedFSTest, OddNamesAreGivenAsTheyAre) {
  directory_.makeFile("odd/ a\n\"b\" ");
  directory_.makeFile("odd/\xC3\xA9");

  EXPECT_THAT(fs_.entries(directory_.path("odd")), UnorderedElementsAre(" a\n\"b\" ", "\xC3\xA9"));
}

TEST_F(RealPrivilegedFSTest, WhatCannotBeListedHasNoEntries) {
  EXPECT_THAT(fs_.entries(directory_.path("absent")), IsEmpty());
  EXPECT_THAT(fs_.entries(directory_.makeFile("file")), IsEmpty());
  EXPECT_THAT(fs_.entries(directory_.makeDirectory("empty")), IsEmpty());
  EXPECT_THAT(fs_.entries(""), IsEmpty());
}

TEST_F(RealPrivilegedFSTest, AFileChanged47HoursAgoIsOneDayOld) {
  const std::string file = directory_.makeFile("file");
  setModifiedHoursAgo(file, 47);

  EXPECT_EQ(fs_.modifiedDaysAgo(file), 1);
}

TEST_F(RealPrivilegedFSTest, AgeIsCutToWholeDays) {
  const std::string file = directory_.makeFile("file");
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 0);

  setModifiedHoursAgo(file, 23);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 0);
  setModifiedHoursAgo(file, 25);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 1);
  setModifiedHoursAgo(file, 8 * 24 - 1);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 7);
  setModifiedHoursAgo(file, 8 * 24 + 1);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 8);
}

TEST_F(RealPrivilegedFSTest, AFutureChangeIsZeroOrNegative) {
  const std::string file = directory_.makeFile("file");

  setModifiedHoursAgo(file, -23);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), 0);
  setModifiedHoursAgo(file, -49);
  EXPECT_EQ(fs_.modifiedDaysAgo(file), -2);
}

TEST_F(RealPrivilegedFSTest, TheAgeOfALinkIsItsOwn) {
  const std::string target = directory_.makeFile("target");
  const std::string link = directory_.makeLink("link", target);
  setModifiedHoursAgo(target, 100 * 24);

  EXPECT_EQ(fs_.modifiedDaysAgo(link), 0);
  EXPECT_EQ(fs_.modifiedDaysAgo(directory_.makeLink("dangling", "/no/such/file")), 0);
}

TEST_F(RealPrivilegedFSTest, WhatIsNotThereHasNoAge) {
  EXPECT_EQ(fs_.modifiedDaysAgo(directory_.path("absent")), std::nullopt);
  EXPECT_EQ(fs_.modifiedDaysAgo(""), std::nullopt);
}

TEST_F(RealPrivilegedFSTest, APrivateDirectoryGetsExactlyItsModeWhateverTheUmask) {
  const ScopedUmask umask(0277);

  EXPECT_TRUE(fs_.makePrivateDir(directory_.path("private"), 0700));

  EXPECT_EQ(permissionsOf(directory_.path("private")), 0700U);
}

TEST_F(RealPrivilegedFSTest, DirectoriesAboveAPrivateOneGetTheDefault) {
  const ScopedUmask umask(022);

  EXPECT_TRUE(fs_.makePrivateDir(directory_.path("above/private"), 0700));

  EXPECT_EQ(permissionsOf(directory_.path("above")), 0755U);
  EXPECT_EQ(permissionsOf(directory_.path("above/private")), 0700U);
}

TEST_F(RealPrivilegedFSTest, AnExistingDirectoryIsNarrowedAndKeepsItsContents) {
  directory_.makeFile("wide/kept", "kept");
  std::filesystem::permissions(directory_.path("wide"), std::filesystem::perms::all);

  EXPECT_TRUE(fs_.makePrivateDir(directory_.path("wide"), 0700));

  EXPECT_EQ(permissionsOf(directory_.path("wide")), 0700U);
  EXPECT_EQ(contentsOf(directory_.path("wide/kept")), "kept");
}

TEST_F(RealPrivilegedFSTest, APrivateDirectoryCannotReplaceAFile) {
  const std::string file = directory_.makeFile("file", "kept");
  std::filesystem::permissions(file, std::filesystem::perms(0644));

  EXPECT_FALSE(fs_.makePrivateDir(file, 0700));

  EXPECT_EQ(contentsOf(file), "kept");
  EXPECT_EQ(permissionsOf(file), 0644U);
}

TEST_F(RealPrivilegedFSTest, APrivateDirectoryMayLieInTheWorkingDirectory) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.path());

  EXPECT_TRUE(fs_.makePrivateDir("private", 0700));
  std::filesystem::current_path(before);

  EXPECT_EQ(permissionsOf(directory_.path("private")), 0700U);
}

TEST_F(RealPrivilegedFSTest, APrivateDirectoryNeedsRoomAboveIt) {
  EXPECT_FALSE(fs_.makePrivateDir(directory_.makeFile("file") + "/private", 0700));
  EXPECT_FALSE(fs_.makePrivateDir(directory_.makeLink("dangling", "/no/such/place"), 0700));
  EXPECT_FALSE(fs_.makePrivateDir("", 0700));
}

TEST_F(RealPrivilegedFSTest, APathThatHidesAnEndBehindANulIsRefused) {
  const std::string file = directory_.makeFile("file", "kept");
  const std::string absent = directory_.path("absent");

  EXPECT_FALSE(fs_.exists(withHiddenEnd(file)));
  EXPECT_FALSE(fs_.remove(withHiddenEnd(file)));
  EXPECT_FALSE(fs_.removeTree(withHiddenEnd(file)));
  EXPECT_FALSE(fs_.copyTree(withHiddenEnd(file), absent));
  EXPECT_FALSE(fs_.copyTree(file, withHiddenEnd(absent)));
  EXPECT_FALSE(fs_.stageFile(withHiddenEnd(file), absent));
  EXPECT_FALSE(fs_.stageFile(file, withHiddenEnd(absent)));
  EXPECT_FALSE(fs_.makeDir(withHiddenEnd(absent)));
  EXPECT_THAT(fs_.entries(withHiddenEnd(directory_.path())), IsEmpty());
  EXPECT_EQ(fs_.modifiedDaysAgo(withHiddenEnd(file)), std::nullopt);
  EXPECT_FALSE(fs_.makePrivateDir(withHiddenEnd(absent), 0700));

  EXPECT_EQ(contentsOf(file), "kept");
  EXPECT_FALSE(isNamed(absent));
}

}  // namespace
}  // namespace halvo
