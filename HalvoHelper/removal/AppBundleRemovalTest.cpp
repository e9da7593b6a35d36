#include "HalvoHelper/removal/AppBundleRemoval.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::ElementsAre;

// ---- Over a scripted file system: what is asked, removed and logged

class AppBundleRemovalTest : public testing::Test {
 protected:
  bool remove(const std::string& path, const std::optional<std::string>& resolved) {
    return halvoRemoveAppBundle(
        path, fs,
        [&](const std::string& given) {
          recorder->calls.push_back("realpath " + given);
          return resolved;
        },
        [&](std::string_view line) { recorder->calls.push_back("log " + std::string(line)); });
  }

  std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
  ScriptedPrivilegedFS fs{recorder};
};

TEST_F(AppBundleRemovalTest, TheResolvedPathIsRemovedAndNothingIsLogged) {
  fs.present = {"/tmp/Halvo.app/Contents/MacOS/halvo-app"};

  EXPECT_TRUE(remove("/tmp/Halvo.app", "/Applications/Halvo.app"));

  EXPECT_THAT(recorder->calls, ElementsAre("exists /tmp/Halvo.app/Contents/MacOS/halvo-helper",
                                           "exists /tmp/Halvo.app/Contents/MacOS/halvo-app", "realpath /tmp/Halvo.app",
                                           "removeTree /Applications/Halvo.app"));
}

TEST_F(AppBundleRemovalTest, ABundleWithoutMarkersIsRefusedUnresolved) {
  EXPECT_FALSE(remove("/Applications/Halvo.app", "/Applications/Halvo.app"));

  EXPECT_EQ(recorder->calls.back(), "log halvo-helper: refused to remove non-Halvo path /Applications/Halvo.app");
  EXPECT_THAT(recorder->calls, testing::Not(testing::Contains(testing::StartsWith("realpath"))));
}

TEST_F(AppBundleRemovalTest, ARefusedPathIsLoggedAsGivenAndNothingIsLookedAt) {
  EXPECT_FALSE(remove("Applications/Halvo.app\n", "/Applications/Halvo.app"));

  EXPECT_THAT(recorder->calls,
              ElementsAre("log halvo-helper: refused to remove non-Halvo path Applications/Halvo.app\n"));
}

TEST_F(AppBundleRemovalTest, ABundleThatVanishesBetweenTheChecksIsRefused) {
  fs.present = {"/Applications/Halvo.app/Contents/MacOS/halvo-helper"};

  EXPECT_FALSE(remove("/Applications/Halvo.app", std::nullopt));

  EXPECT_EQ(recorder->calls.back(),
            "log halvo-helper: refused to remove (failed realpath re-validation) /Applications/Halvo.app");
}

TEST_F(AppBundleRemovalTest, ABundleReplacedByALinkBetweenTheChecksIsRefused) {
  fs.present = {"/Applications/Halvo.app/Contents/MacOS/halvo-helper"};

  EXPECT_FALSE(remove("/Applications/Halvo.app", "/System/Library"));

  EXPECT_EQ(recorder->calls.back(),
            "log halvo-helper: refused to remove (failed realpath re-validation) /Applications/Halvo.app");
}

TEST_F(AppBundleRemovalTest, ARemovalThatFailsIsAnsweredFalseWithoutALine) {
  fs.present = {"/Applications/Halvo.app/Contents/MacOS/halvo-helper"};
  fs.failing = {"removeTree /Applications/Halvo.app"};

  EXPECT_FALSE(remove("/Applications/Halvo.app", "/Applications/Halvo.app"));

  EXPECT_EQ(recorder->calls.back(), "removeTree /Applications/Halvo.app");
}

// ---- Over the real file system

class RealBundleRemovalTest : public testing::Test {
 protected:
  bool remove(const std::string& path) {
    return halvoRemoveAppBundle(path, RealPrivilegedFS(), halvoCanonicalPath,
                                [&](std::string_view line) { lines.emplace_back(line); });
  }

  TemporaryDirectory directory;
  std::vector<std::string> lines;
};

TEST_F(RealBundleRemovalTest, RemovesTheWholeBundle) {
  directory.makeFile("Halvo.app/Contents/MacOS/halvo-app");
  directory.makeFile("Halvo.app/Contents/Resources/a b/\"quoted\"");

  EXPECT_TRUE(remove(directory.path("Halvo.app")));

  EXPECT_FALSE(isNamed(directory.path("Halvo.app")));
}

TEST_F(RealBundleRemovalTest, ThroughALinkRemovesTheTargetAndKeepsTheLink) {
  directory.makeFile("real/Halvo.app/Contents/MacOS/halvo-app");
  const std::string link = directory.makeLink("Halvo.app", directory.path("real/Halvo.app"));

  EXPECT_TRUE(remove(link));

  EXPECT_FALSE(isNamed(directory.path("real/Halvo.app")));
  EXPECT_TRUE(isNamed(link));
}

TEST_F(RealBundleRemovalTest, ALinkToAnotherNameLeavesTheTargetAlone) {
  const std::string marker = directory.makeFile("Victim/Contents/MacOS/halvo-app");
  const std::string link = directory.makeLink("Halvo.app", directory.path("Victim"));

  EXPECT_FALSE(remove(link));

  EXPECT_TRUE(isNamed(marker));
  EXPECT_THAT(lines, ElementsAre("halvo-helper: refused to remove (failed realpath re-validation) " + link));
}

TEST_F(RealBundleRemovalTest, AMarkerThatIsADirectoryCounts) {
  directory.makeDirectory("Halvo.app/Contents/MacOS/halvo-daemon");

  EXPECT_TRUE(remove(directory.path("Halvo.app")));

  EXPECT_FALSE(isNamed(directory.path("Halvo.app")));
}

TEST_F(RealBundleRemovalTest, AMarkerThatIsALinkToAFileCountsAndTheFileStays) {
  const std::string outside = directory.makeFile("outside");
  directory.makeLink("Halvo.app/Contents/MacOS/halvo-helper", outside);

  EXPECT_TRUE(remove(directory.path("Halvo.app")));

  EXPECT_FALSE(isNamed(directory.path("Halvo.app")));
  EXPECT_TRUE(isNamed(outside));
}

TEST_F(RealBundleRemovalTest, AMarkerThatIsADanglingLinkDoesNotCount) {
  const std::string marker = directory.makeLink("Halvo.app/Contents/MacOS/halvo-app", directory.path("absent"));
  const std::string bundle = directory.path("Halvo.app");

  EXPECT_FALSE(remove(bundle));

  EXPECT_TRUE(isNamed(marker));
  EXPECT_THAT(lines, ElementsAre("halvo-helper: refused to remove non-Halvo path " + bundle));
}

// Left open: the path is what is removed, and what it names may change until then.
TEST_F(RealBundleRemovalTest, WhatTakesTheBundlesPlaceOnceItIsResolvedIsRemovedWithoutAMarker) {
  directory.makeFile("apps/Halvo.app/Contents/MacOS/halvo-app");
  directory.makeFile("other/Halvo.app/document");
  const auto resolveAndSwap = [&](const std::string& path) {
    const auto resolved = halvoCanonicalPath(path);
    std::filesystem::rename(directory.path("apps"), directory.path("aside"));
    std::filesystem::rename(directory.path("other"), directory.path("apps"));
    return resolved;
  };

  EXPECT_TRUE(halvoRemoveAppBundle(directory.path("apps/Halvo.app"), RealPrivilegedFS(), resolveAndSwap, [](auto) {}));

  EXPECT_FALSE(isNamed(directory.path("apps/Halvo.app")));
  EXPECT_TRUE(isNamed(directory.path("aside/Halvo.app/Contents/MacOS/halvo-app")));
}

TEST_F(RealBundleRemovalTest, APathLongerThanTheSystemAllowsIsRefused) {
  const std::string path = "/" + std::string(100'000, 'x') + "/Halvo.app";

  EXPECT_FALSE(remove(path));

  EXPECT_EQ(lines.size(), 1U);
}

TEST_F(RealBundleRemovalTest, APathWithANulIsRefusedAlthoughTheBundleBeforeItExists) {
  const std::string marker = directory.makeFile("Halvo.app/Contents/MacOS/halvo-app");

  EXPECT_FALSE(remove(directory.path("Halvo.app") + std::string("\0/Halvo.app", 11)));

  EXPECT_TRUE(isNamed(marker));
}

// ---- The canonical path

TEST(CanonicalPathTest, LeadsThroughLinksToTheItemItself) {
  const TemporaryDirectory directory;
  const std::string item = directory.makeFile("folder/item");
  const std::string link = directory.makeLink("link", directory.path("folder"));

  EXPECT_EQ(halvoCanonicalPath(link + "//./item"), item);
}

TEST(CanonicalPathTest, WhatCannotBeResolvedGivesNothing) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoCanonicalPath(""), std::nullopt);
  EXPECT_EQ(halvoCanonicalPath(directory.path("absent")), std::nullopt);
  EXPECT_EQ(halvoCanonicalPath(directory.makeFile("file") + "/below"), std::nullopt);
  EXPECT_EQ(halvoCanonicalPath(directory.makeLink("dangling", "/no/such/file")), std::nullopt);
  EXPECT_EQ(halvoCanonicalPath(directory.makeLink("loop", directory.path("loop"))), std::nullopt);
}

}  // namespace
}  // namespace halvo
