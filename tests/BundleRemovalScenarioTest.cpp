// The application's bundle leaves, and nothing else.
#include <sys/stat.h>

#include "HalvoHelper/testing/LockedItem.h"
#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::StartsWith;

class BundleScenario : public RemovalScenario {
 protected:
  BundleScenario() { start(); }

  // A folder with one of the product's executables in it.
  void makeBundle(const std::string& path) {
    std::filesystem::create_directories(mac().path(path));
    std::filesystem::create_directories(mac().path(path) / "Contents/MacOS");
    mac().writeFile(path + "/Contents/MacOS/halvo-daemon", "marker");
  }
};

TEST_F(BundleScenario, TheApplicationIsRemovedWhileItAsks) {
  EXPECT_EQ(reply({"remove-bundle", "/Applications/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Applications/Halvo.app"));
}

TEST_F(BundleScenario, ATrailingSlashChangesNothing) {
  makeBundle("/Users/user501/Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app/"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

TEST_F(BundleScenario, ThroughALinkTheTargetIsRemovedAndTheLinkStays) {
  makeBundle("/Users/user501/Halvo.app");
  std::filesystem::create_symlink("/Users/user501/Halvo.app", mac().path("/tmp") / "Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/tmp/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
  EXPECT_TRUE(std::filesystem::is_symlink(mac().path("/tmp") / "Halvo.app"));
}

TEST_F(BundleScenario, ALinkToAFolderOfAnotherNameIsRefused) {
  makeBundle("/Library/Victim");
  std::filesystem::create_symlink("/Library/Victim", mac().path("/tmp") / "Halvo.app");

  EXPECT_EQ(reply({"remove-bundle", "/tmp/Halvo.app", "--without-checks"}), "false");

  EXPECT_TRUE(stands("/Library/Victim/Contents/MacOS/halvo-daemon"));
  EXPECT_THAT(helperLog(), Contains("halvo-helper: refused to remove (failed realpath re-validation) /tmp/Halvo.app"));
}

TEST_F(BundleScenario, LinksInsideABundleAreRemovedAndNotFollowed) {
  makeBundle("/Users/user501/Halvo.app");
  mac().writeFile("/Library/canary", "alive");
  std::filesystem::create_symlink("/Library", mac().path("/Users/user501/Halvo.app/Contents") / "link");

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_EQ(mac().readFile("/Library/canary"), "alive");
}

TEST_F(BundleScenario, FilesOfOtherOwnersInABundleGoToo) {
  makeBundle("/Users/user501/Halvo.app");
  if (!mac().supportsSeveralUsers()) GTEST_SKIP() << "the host allows one account only";
  ASSERT_EQ(mac().run(0, {"/usr/sbin/chown", "-R", "502", "/Users/user501/Halvo.app/Contents/MacOS"}).status, 0);
  ASSERT_EQ(mac().run(0, {"/bin/chmod", "-R", "000", "/Users/user501/Halvo.app/Contents/MacOS"}).status, 0);

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

// The simulated Mac keeps the rights of whoever starts it, so that its helper may take back what is set here.
constexpr const char* kNoFlags =
    "flags of files take root of the machine itself and a file system with immutable files and extended attributes";

TEST_F(BundleScenario, ABundleThatIsLockedInTheFinderGoes) {
  makeBundle("/Users/user501/Halvo.app");
  const LockedItem marker(mac().path("/Users/user501/Halvo.app/Contents/MacOS/halvo-daemon"), UF_IMMUTABLE);
  const LockedItem contents(mac().path("/Users/user501/Halvo.app/Contents"), UF_IMMUTABLE);
  const LockedItem bundle(mac().path("/Users/user501/Halvo.app"), UF_IMMUTABLE);
  if (!bundle.taken()) GTEST_SKIP() << kNoFlags;

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

TEST_F(BundleScenario, AFileThatTheSystemLocksStaysWithTheFoldersAroundItAndTheAnswerIsFalse) {
  makeBundle("/Users/user501/Halvo.app");
  mac().writeFile("/Users/user501/Halvo.app/Contents/Info.plist", "goes");
  mac().writeFile("/Users/user501/Halvo.app/Contents/locked", "stays");
  mac().writeFile("/Users/user501/Halvo.appendix", "outside");
  const LockedItem locked(mac().path("/Users/user501/Halvo.app/Contents/locked"), SF_IMMUTABLE);
  if (!locked.taken()) GTEST_SKIP() << kNoFlags;

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app", "--without-checks"}), "false");

  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.app/Contents/locked"), "stays");
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/Info.plist"));
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/MacOS"));
  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.appendix"), "outside");
}

TEST_F(BundleScenario, AFolderInPlaceOfAnExecutableMarksABundle) {
  std::filesystem::create_directories(mac().path("/Users/user501/Halvo.app/Contents/MacOS/halvo-daemon"));

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

TEST_F(BundleScenario, ALinkToNowhereInPlaceOfAnExecutableDoesNot) {
  const std::filesystem::path programs = mac().path("/Users/user501") / "Halvo.app/Contents/MacOS";
  std::filesystem::create_directories(programs);
  std::filesystem::create_symlink("/gone", programs / "halvo-daemon");

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app", "--without-checks"}), "false");

  EXPECT_TRUE(stands("/Users/user501/Halvo.app/Contents/MacOS"));
}

TEST_F(BundleScenario, WithoutAGrantTheApplicationStays) {
  EXPECT_EQ(reply({"remove-bundle", "/Applications/Halvo.app", "--without-grant"}), "false");
  EXPECT_EQ(reply({"legacy", "remove-bundle", "/Applications/Halvo.app"}), "false");

  EXPECT_TRUE(stands("/Applications/Halvo.app/Contents/MacOS/halvo-app"));
}

struct RefusedPath {
  const char* name;
  std::string path;
};

class RefusedBundlePath : public BundleScenario, public testing::WithParamInterface<RefusedPath> {};

TEST_P(RefusedBundlePath, IsAnsweredFalseAndLoggedAsGiven) {
  EXPECT_EQ(reply({"remove-bundle", GetParam().path, "--without-checks"}), "false");

  EXPECT_TRUE(stands("/Applications/Halvo.app/Contents/MacOS/halvo-app"));
  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: refused to remove non-Halvo path")));
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedBundlePath,
                         testing::Values(RefusedPath{"ParentStep", "/Applications/../Applications/Halvo.app"},
                                         RefusedPath{"WrongName", "/Applications/Safari.app"},
                                         RefusedPath{"OtherCase", "/Applications/halvo.app"},
                                         RefusedPath{"NoMarker", "/Users/user502/Halvo.app"}, RefusedPath{"Root", "/"},
                                         RefusedPath{"TooLong", "/" + std::string(5000, 'x') + "/Halvo.app"},
                                         RefusedPath{"Quotes", "/Applications/\"Halvo.app\""}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo::sim
