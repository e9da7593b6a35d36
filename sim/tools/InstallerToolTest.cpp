#include "sim/tools/SystemTools.h"

#include <gmock/gmock.h>

#include "sim/tools/FlatPackage.h"
#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kDriverInfo = "Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist";
constexpr const char* kDriver = "Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/MacOS/Halvo";
constexpr const char* kBroker = "Library/PrivilegedHelperTools/halvo-broker";
constexpr const char* kBrokerJob = "Library/LaunchDaemons/com.halvo.broker.plist";
constexpr const char* kAgentJob = "Library/LaunchAgents/com.halvo.daemon.plist";
constexpr const char* kReceipt = "private/var/db/receipts/com.halvo.pkg.plist";

unsigned modeOf(const std::filesystem::path& file) {
  return static_cast<unsigned>(std::filesystem::status(file).permissions());
}

TEST(InstallerToolTest, EveryFileOfThePackageIsInstalledByteForByte) {
  const ToolMachine machine;

  ASSERT_EQ(machine.install(machine.package("1.2.0")).status, 0);

  EXPECT_TRUE(machine.readInside(kDriverInfo) == productFile("1.2.0", kDriverInfo));
  EXPECT_TRUE(machine.readInside(kDriver) == productFile("1.2.0", kDriver));
  EXPECT_TRUE(machine.readInside(kBroker) == productFile("1.2.0", kBroker));
  EXPECT_TRUE(machine.readInside(kBrokerJob) == productFile("1.2.0", kBrokerJob));
  EXPECT_TRUE(machine.readInside(kAgentJob) == productFile("1.2.0", kAgentJob));
  EXPECT_EQ(machine.readInside(kDriver).size(), 204800U);
}

TEST(InstallerToolTest, ModesAreThoseOfThePackage) {
  const ToolMachine machine;

  ASSERT_EQ(machine.install(machine.package("1.2.0")).status, 0);

  EXPECT_EQ(modeOf(machine.root() / kDriver), 0755U);
  EXPECT_EQ(modeOf(machine.root() / kBroker), 0755U);
  EXPECT_EQ(modeOf(machine.root() / kAgentJob), 0644U);
  EXPECT_EQ(modeOf(machine.root() / "Library"), 0755U);
}

TEST(InstallerToolTest, TheModeOfTheRootStays) {
  const ToolMachine machine;
  std::filesystem::permissions(machine.root(), std::filesystem::perms{0711});

  ASSERT_EQ(machine.install(machine.package("1.2.0")).status, 0);

  EXPECT_EQ(modeOf(machine.root()), 0711U);
}

TEST(InstallerToolTest, PrintsWhatItDoes) {
  const ToolMachine machine;

  EXPECT_EQ(machine.install(machine.package("1.2.0")), (ToolAnswer{.status = 0,
                                                                   .out = "installer: Package name is Halvo-1.2.0\n"
                                                                          "installer: Installing at base path /\n"
                                                                          "installer: The install was successful.\n",
                                                                   .err = ""}));
}

TEST(InstallerToolTest, AnotherVersionReplacesTheInstalledOne) {
  const ToolMachine machine;
  machine.install(machine.package("1.2.0"));

  ASSERT_EQ(machine.install(machine.package("1.3.0")).status, 0);

  EXPECT_TRUE(machine.readInside(kBroker) == productFile("1.3.0", kBroker));
  EXPECT_TRUE(machine.readInside(kDriverInfo) == productFile("1.3.0", kDriverInfo));
}

TEST(InstallerToolTest, TheReceiptNamesPackageVersionAndFiles) {
  const ToolMachine machine;

  machine.install(machine.package("1.2.0"));

  EXPECT_THAT(machine.readInside(kReceipt),
              HasSubstr("<key>PackageIdentifier</key>\n\t<string>com.halvo.pkg</string>"));
  EXPECT_THAT(machine.readInside(kReceipt), HasSubstr("<key>PackageVersion</key>\n\t<string>1.2.0</string>"));
  EXPECT_THAT(machine.readInside(kReceipt), HasSubstr("<string>Halvo-1.2.0.pkg</string>"));
  EXPECT_THAT(machine.readInside("private/var/db/receipts/com.halvo.pkg.bom"),
              HasSubstr("./Library/LaunchAgents/com.halvo.daemon.plist\n"));
}

TEST(InstallerToolTest, APayloadCutShortLeavesNewFilesAndAHalfOneOfFullSize) {
  const ToolMachine machine;
  machine.install(machine.package("1.2.0"));

  const ToolAnswer answer = machine.install(machine.package("1.3.0", {.payloadBytes = 60000}));

  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(answer.err, StartsWith("installer: The install failed. (The Installer encountered an error"));
  EXPECT_TRUE(machine.readInside(kDriverInfo) == productFile("1.3.0", kDriverInfo));
  EXPECT_EQ(machine.readInside(kDriver).size(), 204800U);
  EXPECT_TRUE(machine.readInside(kDriver).starts_with(productFile("1.3.0", kDriver).substr(0, 40000)));
  EXPECT_FALSE(machine.readInside(kDriver) == productFile("1.3.0", kDriver));
  EXPECT_TRUE(machine.readInside(kBroker) == productFile("1.2.0", kBroker));
  EXPECT_THAT(machine.readInside(kReceipt), HasSubstr("<string>1.2.0</string>"));
}

TEST(InstallerToolTest, APayloadCutBeforeItsFirstFileInstallsNothing) {
  const ToolMachine machine;

  EXPECT_EQ(machine.install(machine.package("1.2.0", {.payloadBytes = 5})).status, 1);

  EXPECT_THAT(machine.namesInside(), IsEmpty());
}

// A package of one file whose script runs.
std::string packageWith(const ToolMachine& machine, const std::string& scriptName, const std::string& script) {
  const std::string info = R"(<pkg-info identifier="a" version="1" auth="root">)";
  FlatPackage({{"PackageInfo", info},
               {"Payload", gzippedCpio({{.path = "./file", .content = "new"}})},
               {"Scripts", gzippedCpio({{.path = "./" + scriptName, .mode = 0755, .content = script},
                                        {.path = "./resource", .content = "beside the script\n"}})}})
      .write(machine.beside("scripts.pkg"));
  return machine.beside("scripts.pkg");
}

TEST(InstallerToolTest, ThePreinstallRunsBesideItsFilesBeforeThePayload) {
  const ToolMachine machine;
  machine.file("root/file", "old\n");
  const std::string package =
      packageWith(machine, "preinstall", "#!/bin/sh\ncat resource '" + (machine.root() / "file").string() + "'\n");

  ASSERT_EQ(machine.install(package).status, 0);

  EXPECT_EQ(machine.readInside("private/var/log/install.log"), "beside the script\nold\n");
  EXPECT_EQ(machine.readInside("file"), "new");
}

TEST(InstallerToolTest, APreinstallThatFailsLeavesEverythingAsItWas) {
  const ToolMachine machine;
  machine.file("root/file", "old");

  const ToolAnswer answer = machine.install(packageWith(machine, "preinstall", "#!/bin/sh\nexit 3\n"));

  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(answer.err, HasSubstr("An error occurred while running scripts from the package"));
  EXPECT_EQ(machine.readInside("file"), "old");
}

TEST(InstallerToolTest, ThePostinstallLearnsPackageAndTarget) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\"\n");
  const std::string package = machine.package("1.2.0", {.postinstall = script});

  ASSERT_EQ(machine.install(package).status, 0);

  EXPECT_EQ(machine.readInside("private/var/log/install.log"), "4|" + package + "|/|/|/|");
}

TEST(InstallerToolTest, ThePostinstallRunsInAFolderOfItsOwnThatIsRemoved) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\npwd; ls\n");

  ASSERT_EQ(machine.install(machine.package("1.2.0", {.postinstall = script})).status, 0);

  EXPECT_THAT(machine.readInside("private/var/log/install.log"),
              testing::MatchesRegex(".*/root/private/tmp/PKInstallSandbox\\.......\npostinstall\n"));
  EXPECT_TRUE(std::filesystem::is_empty(machine.root() / "private/tmp"));
}

TEST(InstallerToolTest, APostinstallThatFailsLeavesTheFilesAndNoReceipt) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\nexit 3\n");

  const ToolAnswer answer = machine.install(machine.package("1.2.0", {.postinstall = script}));

  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(answer.err,
              HasSubstr("An error occurred while running scripts from the package \xE2\x80\x9CHalvo-1.2.0.pkg"));
  EXPECT_TRUE(machine.readInside(kBroker) == productFile("1.2.0", kBroker));
  EXPECT_EQ(machine.readInside(kReceipt), "");
}

TEST(InstallerToolTest, APostinstallThatASignalEndsFails) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\nkill -9 $$\n");

  EXPECT_EQ(machine.install(machine.package("1.2.0", {.postinstall = script})).status, 1);
}

TEST(InstallerToolTest, APostinstallThatCannotBeStartedFails) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/nowhere/interpreter\n");

  EXPECT_EQ(machine.install(machine.package("1.2.0", {.postinstall = script})).status, 1);
}

TEST(InstallerToolTest, AFileThatIsNoPackageChangesNothing) {
  const ToolMachine machine;

  const ToolAnswer answer = machine.install(machine.file("text.pkg", "This is no package."));

  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(answer.err, HasSubstr("there was no software found to install."));
  EXPECT_THAT(machine.namesInside(), IsEmpty());
}

TEST(InstallerToolTest, APackageThatIsCutOffChangesNothing) {
  const ToolMachine machine;
  const std::string package = machine.package("1.2.0");
  std::filesystem::resize_file(package, 100000);

  EXPECT_EQ(machine.install(package).status, 1);

  EXPECT_THAT(machine.namesInside(), IsEmpty());
}

TEST(InstallerToolTest, APackageWithAChangedByteChangesNothing) {
  const ToolMachine machine;
  std::string bytes = machine.readBeside(std::filesystem::path(machine.package("1.2.0")).filename());
  bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);

  EXPECT_EQ(machine.install(machine.file("changed.pkg", bytes)).status, 1);

  EXPECT_THAT(machine.namesInside(), IsEmpty());
}

TEST(InstallerToolTest, APackageWithoutAPayloadHasNoSoftware) {
  const ToolMachine machine;
  const std::map<std::string, std::string> members = {{"PackageInfo", "<pkg-info identifier=\"a\" version=\"1\">"}};
  FlatPackage(members).write(machine.beside("empty.pkg"));

  EXPECT_THAT(machine.install(machine.beside("empty.pkg")).err, HasSubstr("no software found"));
}

TEST(InstallerToolTest, APackageThatIsNotThereIsNamed) {
  const ToolMachine machine;

  EXPECT_EQ(machine.install("/nowhere/x.pkg"),
            (ToolAnswer{.status = 1,
                        .out = "",
                        .err = "installer: Error - the package path specified was invalid: '/nowhere/x.pkg'.\n"}));
}

TEST(InstallerToolTest, OnlyTheStartVolumeIsATarget) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("installer", {"-pkg", machine.package("1.2.0"), "-target", "/Volumes/Other"}).err,
            "installer: Error - the target path specified was invalid: '/Volumes/Other'.\n");
}

class InstallerUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(InstallerUsage, IsPrintedForOtherArguments) {
  const ToolMachine machine;

  EXPECT_EQ(machine.run("installer", GetParam()),
            (ToolAnswer{.status = 1, .out = "", .err = "Usage: installer -pkg <pathToPackage> -target </>\n"}));
}

INSTANTIATE_TEST_SUITE_P(Table, InstallerUsage,
                         testing::Values(std::vector<std::string>{}, std::vector<std::string>{"-pkg", "x"},
                                         std::vector<std::string>{"-pkg", "x", "-pkg", "y"},
                                         std::vector<std::string>{"-pkg", "x", "-volume", "/"},
                                         std::vector<std::string>{"-pkg", "x", "-target", "/", "-verbose"}));

}  // namespace
}  // namespace halvo::sim
