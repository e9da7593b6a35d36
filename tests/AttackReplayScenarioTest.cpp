// Attacks that helpers of this kind have met, replayed on the whole machine. Those whose answer is that they are left
// open are here too, so that nobody takes them for answered.
#include <charconv>
#include <filesystem>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDaemonPlist = "/Library/LaunchAgents/com.halvo.daemon.plist";
constexpr const char* kDriverPlist = "/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist";

class AttackReplay : public Scenario {
 protected:
  AttackReplay() { start(); }

  // An install of the application that goes on until letItGo(): as long, its authorization lives.
  std::future<CommandResult> installThatLasts() {
    auto install = machine.appAsync(
        ProductMachine::install(machine.package({.name = "slow", .extra = {"--postinstall", waitingScript(mac())}})));
    EXPECT_TRUE(waitUntil([&] { return !mac().readFile(kDaemonPlist).empty(); }));
    return install;
  }

  // The external form of the only authorization on the machine, as words of busctl: length and bytes. Authorization
  // Services of this machine name an authorization's record by it.
  std::vector<std::string> stolenForm() {
    const std::filesystem::directory_iterator records(mac().path("/sim/authorization-tokens"));
    const std::string digits = records->path().stem().string();
    std::vector<std::string> words = {"32"};
    for (std::size_t i = 0; i < digits.size(); i += 2) {
      int byte = 0;
      std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
      words.push_back(std::to_string(byte));
    }
    return words;
  }

  // A third party's client, signed as given, sends one request. It does not wait longer than a second for the answer.
  CommandResult sendAs(const std::string& identifier, const std::string& member, const std::string& types,
                       const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {machine.signedCopy("/usr/bin/busctl", identifier, identifier, "QX4TRM2ZL9"),
                                      "--address=unix:path=/var/run/mach/com.halvo.helper",
                                      "--timeout=1",
                                      "call",
                                      "com.halvo.helper",
                                      "/com/halvo/helper",
                                      "com.halvo.HalvoHelperProtocol",
                                      member,
                                      types};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return mac().run(machine.user(), words);
  }

  static constexpr const char* kFinalize = "finalizeRemovalWithAuthorization_withReply_";
  static constexpr const char* kInstall =
      "installSystemPkgWithAuthorization_pkgPath_manifestJSON_acceptAudioInterruption_withReply_";
};

TEST_F(AttackReplay, AnExternalFormStolenFromAnotherProcessGainsNothingOverARefusedConnection) {
  auto install = installThatLasts();

  const CommandResult thief = sendAs("com.halvo.app2", kFinalize, "ay", stolenForm());

  EXPECT_NE(thief.status, 0);
  EXPECT_EQ(thief.out, "");
  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: rejected unauthorized client pid=")));
  letItGo(mac());
  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

// Left open: an approval is worth the same to every admitted client and for every operation.
TEST_F(AttackReplay, AnApprovalOfAnInstallServesAFinalRemovalByAnotherAdmittedClient) {
  auto install = installThatLasts();

  EXPECT_EQ(sendAs("com.halvo.app", kFinalize, "ay", stolenForm()).out, "b true\n");

  letItGo(mac());
  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
}

// Left open: nobody asks again for whom a request is carried out when its turn has come.
TEST_F(AttackReplay, AnInstallThatWaitsForItsTurnIsCarriedOutAlthoughItsClientHasGone) {
  const PackageFiles next = machine.package({.name = "next", .version = "1.3.0", .folder = ProductMachine::kHome});
  auto install = installThatLasts();
  std::vector<std::string> arguments = stolenForm();
  arguments.insert(arguments.end(), {next.path, R"({"driver_version":"1.3.0"})", "false"});

  EXPECT_THAT(sendAs("com.halvo.app", kInstall, "ayssb", arguments).err, HasSubstr("timed out"));
  EXPECT_THAT(mac().readFile(kDriverPlist), HasSubstr("<string>1.2.0</string>"));
  letItGo(mac());

  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
  EXPECT_TRUE(waitUntil([&] { return mac().readFile(kDriverPlist).find("1.3.0") != std::string::npos; }));
}

// Left open: the version that is compared is the one the client names.
TEST_F(AttackReplay, AnOldPackageIsInstalledWhenItsManifestClaimsToBeNewer) {
  ASSERT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
  const PackageFiles old = machine.package({.name = "old", .version = "1.0.0"});
  mac().writeFile(old.manifest, R"({"driver_version":"999"})");

  EXPECT_EQ(reply(ProductMachine::install(old)), kInstalledReply);

  EXPECT_THAT(mac().readFile(kDriverPlist), HasSubstr("<string>1.0.0</string>"));
}

// Left open: texts of the client stand in a reply as they came. The application's client believes the first code.
TEST_F(AttackReplay, AVersionWithQuotationMarksWritesItsOwnMembersIntoTheRefusal) {
  ASSERT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
  const PackageFiles old = machine.package({.name = "old", .version = "1.0.0"});
  mac().writeFile(old.manifest, R"({"driver_version":"1\",\"code\":\"ok"})");

  const CommandResult answer = machine.app(ProductMachine::install(old));

  EXPECT_EQ(answer.out, R"({"code":"downgrade","installed":"1.2.0","incoming":"1","code":"ok"})"
                        "\n");
  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(mac().readFile(kDriverPlist), HasSubstr("<string>1.2.0</string>"));
}

// Left open: a line feed in a path begins a line of the log file. The system log keeps the entry in one piece.
TEST_F(AttackReplay, APathWithALineFeedForgesALineOfTheInstallLog) {
  const std::string forged = "2026-01-01 00:00:00 +0000: package trusted: nobody";
  const PackageFiles package = machine.package({});

  EXPECT_EQ(reply({"install", "/nowhere\n" + forged, "--manifest", package.manifest, "--without-checks"}),
            kStagingFailedReply);

  EXPECT_THAT(mac().readFile(kInstallLog),
              HasSubstr("\n" + forged + " -> /var/db/halvo/install-staging/incoming.pkg\n"));
}

}  // namespace
}  // namespace halvo::sim
