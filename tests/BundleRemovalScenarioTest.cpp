// The application's bundle leaves, and nothing else.
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include "HalvoHelper/system/UniqueDescriptor.h"
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

  EXPECT_EQ(reply({"remove-bundle", "/tmp/Halvo.app"}), "false");

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
  mac().run(0, {"/bin/chown", "-R", "502", "/Users/user501/Halvo.app/Contents/MacOS"});
  mac().run(0, {"/bin/chmod", "-R", "000", "/Users/user501/Halvo.app/Contents/MacOS"});

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "true");

  EXPECT_FALSE(stands("/Users/user501/Halvo.app"));
}

// A file that not even root can remove while this lives.
class ImmutableFile {
 public:
  explicit ImmutableFile(const std::filesystem::path& path) : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    taken_ = setFlags(FS_IMMUTABLE_FL);
  }
  ~ImmutableFile() { setFlags(0); }
  ImmutableFile(const ImmutableFile&) = delete;
  ImmutableFile& operator=(const ImmutableFile&) = delete;

  // Whether the file system knows such files and lets this process make one.
  [[nodiscard]] bool taken() const { return taken_; }

 private:
  bool setFlags(int flags) const { return ::ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0; }

  UniqueDescriptor file_;
  bool taken_ = false;
};

TEST_F(BundleScenario, AnImmutableFileStaysWithTheFoldersAroundItAndTheAnswerIsFalse) {
  makeBundle("/Users/user501/Halvo.app");
  mac().writeFile("/Users/user501/Halvo.app/Contents/Info.plist", "goes");
  mac().writeFile("/Users/user501/Halvo.app/Contents/locked", "stays");
  mac().writeFile("/Users/user501/Halvo.appendix", "outside");
  const ImmutableFile locked(mac().path("/Users/user501/Halvo.app/Contents/locked"));
  if (!locked.taken()) GTEST_SKIP() << "this file system has no immutable files, or they are not for this user";

  EXPECT_EQ(reply({"remove-bundle", "/Users/user501/Halvo.app"}), "false");

  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.app/Contents/locked"), "stays");
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/Info.plist"));
  EXPECT_FALSE(stands("/Users/user501/Halvo.app/Contents/MacOS"));
  EXPECT_EQ(mac().readFile("/Users/user501/Halvo.appendix"), "outside");
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
  EXPECT_EQ(reply({"remove-bundle", GetParam().path}), "false");

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
