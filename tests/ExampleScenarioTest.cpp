// What a person sees of the example application, from the first contact until nothing of the product is left.
#include <filesystem>

#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kInsideTheBundle = "/Applications/Halvo.app/Contents/MacOS/halvo-example";
constexpr const char* kHelloAndQuestion =
    "The helper answers, version 6.\n"
    "Audio is running and will be interrupted. Continue? [y/n] ";

class ExampleScenario : public RemovalScenario {
 protected:
  ExampleScenario() {
    const std::string copy = machine.signedCopy(HALVO_EXAMPLE_PROGRAM, "halvo-example", "com.halvo.app", "QX4TRM2ZL9");
    std::filesystem::rename(mac().path(copy), mac().path(kInsideTheBundle));
  }

  CommandResult example(const std::vector<std::string>& words, const std::string& typed = {}) {
    std::vector<std::string> command = {kInsideTheBundle};
    command.insert(command.end(), words.begin(), words.end());
    return mac().run(machine.user(), command, typed);
  }

  // Lies where the helper may read it: the example makes no copy of its own.
  PackageFiles readablePackage(PackageContents contents) {
    contents.folder = ProductMachine::kHome;
    return machine.package(contents);
  }

  CommandResult install(const PackageContents& contents, const std::string& typed = {}) {
    const PackageFiles package = readablePackage(contents);
    return example({"install", package.path, package.manifest}, typed);
  }

  std::size_t prompts() { return splitLines(mac().readState("authorization-prompts")).size(); }
};

TEST_F(ExampleScenario, ExplainsHowItIsCalled) {
  start();

  const CommandResult result = example({"reinstall"});

  EXPECT_EQ(result.status, 64);
  EXPECT_EQ(result.out, "usage: halvo-example install PACKAGE MANIFEST | uninstall\n");
}

TEST_F(ExampleScenario, SaysWhereToAllowAHelperThatIsNotRegisteredAndAsksForNoPassword) {
  mac().writeState("registered-services", "");
  start();

  const CommandResult result = install({});

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "The helper cannot be reached. Allow it in System Settings, Login Items, and try again.\n");
  EXPECT_EQ(prompts(), 0U);
}

TEST_F(ExampleScenario, InstallsWithOneApprovalAndShowsTheLog) {
  start();

  const CommandResult result = install({});

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("The helper answers, version 6.\n  20"));
  EXPECT_THAT(result.out, HasSubstr(": package trusted: Developer ID Installer: "));
  EXPECT_THAT(result.out, EndsWith("\nDone.\n"));
  EXPECT_EQ(prompts(), 1U);
}

TEST_F(ExampleScenario, ChangesNothingWithoutAnAdministratorsApproval) {
  mac().writeState("authorization-answer", "deny\n");
  start();

  const CommandResult result = install({});

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            "The helper answers, version 6.\n"
            "An administrator has to approve this, and none did. Nothing was changed.\n");
  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(ExampleScenario, InterruptsAudioForWhoSaysYesWithoutASecondPrompt) {
  mac().writeState("audio-devices", "1\n");
  start();

  const CommandResult result = install({}, "y\n");

  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, StartsWith(kHelloAndQuestion));
  EXPECT_THAT(result.out, EndsWith("\nDone.\n"));
  EXPECT_EQ(prompts(), 1U);
}

TEST_F(ExampleScenario, LeavesAudioAloneForWhoSaysNo) {
  mac().writeState("audio-devices", "1\n");
  start();

  const CommandResult result = install({}, "n\n");

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, StartsWith(kHelloAndQuestion));
  EXPECT_THAT(result.out, EndsWith("\nAudio is running. Nothing was changed.\n"));
  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(ExampleScenario, SaysThatAnOlderDriverIsRefusedAndShowsOnlyWhatTheLogGained) {
  installed();

  const CommandResult result = install({.version = "1.1.9"});

  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(splitLines(result.out).size(), 4U);
  EXPECT_THAT(result.out, HasSubstr(": refusing downgrade: installed=1.2.0 incoming=1.1.9\n"));
  EXPECT_THAT(result.out, EndsWith("\nA newer version is installed already. Nothing was changed.\n"));
}

TEST_F(ExampleScenario, IsNotDeceivedByAManifestThatWritesASecondCodeIntoTheReply) {
  installed();
  const PackageFiles package = readablePackage({});
  mac().writeFile(package.manifest, R"({"driver_version":"1.1.9\",\"code\":\"ok"})");

  const CommandResult result = example({"install", package.path, package.manifest});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, EndsWith("\nA newer version is installed already. Nothing was changed.\n"));
}

TEST_F(ExampleScenario, ShowsNoControlCharactersOutOfALog) {
  installed();
  const PackageFiles package = readablePackage({});
  mac().writeFile(package.manifest, R"({"driver_version":"1.1.9\u001b[2J"})");

  const CommandResult result = example({"install", package.path, package.manifest});

  EXPECT_THAT(result.out, HasSubstr("incoming=1.1.9?[2J\n"));
}

TEST_F(ExampleScenario, SaysThatAPackageOfAnotherTeamIsRefused) {
  start();

  const CommandResult result = install({.report = "wrong-team.txt"});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr(": REFUSED untrusted package (wrong_team): "));
  EXPECT_THAT(result.out, EndsWith("\nThe package was refused, and nothing was changed. "
                                   "Download it again from the maker. (wrong_team)\n"));
  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(ExampleScenario, SaysWhatToDoAboutAPackageThatCannotBeTakenIn) {
  start();

  const CommandResult result = example({"install", "/Users/user501/Downloads/none.pkg", "/Users/user501/none.json"});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out,
              EndsWith("\nThe package was refused, and nothing was changed. Put it into another folder, see "
                       "that the disk is not full, and try again.\n"));
}

TEST_F(ExampleScenario, SaysThatAnInstallWasTakenBack) {
  mac().writeState("faults/installer", "1\n");
  start();

  const CommandResult result = install({});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out,
              EndsWith("\nThe installer failed; the previous version was put back. Keep the log for support.\n"));
}

TEST_F(ExampleScenario, SaysWhereToLookWhenTheHelperEndsDuringAnInstall) {
  start();
  const PackageFiles package = readablePackage({.extra = {"--postinstall", waitingScript(mac())}});
  auto running = mac().runAsync(machine.user(), {kInsideTheBundle, "install", package.path, package.manifest});
  ASSERT_TRUE(waitUntil([&] { return mac().readFile(kInstallLog).find("package trusted") != std::string::npos; }));

  mac().run(0, {"/usr/bin/killall", "halvo-helper"});

  EXPECT_THAT(running.get().out, EndsWith("\nThe helper ended before it replied. How far it came, the last lines of "
                                          "/var/log/halvo-install.log say.\n"));
  letItGo(mac());
}

TEST_F(ExampleScenario, RemovesEverythingFromInsideTheBundleWithOneApproval) {
  installed();
  const std::size_t before = prompts();

  const CommandResult result = example({"uninstall"});

  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(result.out, EndsWith("\nDone.\nHalvo is removed.\n"));
  EXPECT_THAT(machine.components(), IsEmpty());
  EXPECT_FALSE(stands("/Applications/Halvo.app"));
  EXPECT_TRUE(waitUntil([&] { return !machine.job("system", "com.halvo.helper").has_value(); }));
  EXPECT_EQ(prompts(), before + 1);
}

TEST_F(ExampleScenario, RemovesNothingWhileAudioRunsForWhoSaysNo) {
  installed();
  mac().writeState("audio-devices", "1\n");

  const CommandResult result = example({"uninstall"}, "n\n");

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, EndsWith("[y/n] Audio is running. Nothing was changed.\n"));
  EXPECT_TRUE(stands("/Applications/Halvo.app"));
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

}  // namespace
}  // namespace halvo::sim
