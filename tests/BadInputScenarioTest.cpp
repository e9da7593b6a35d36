// Paths, manifests and authorizations that no honest application sends.
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::IsEmpty;

constexpr const char* kManifest = "/Users/user501/manifest.json";

class BadInputScenario : public Scenario {
 protected:
  BadInputScenario() {
    mac().writeFile(kManifest, R"({"driver_version":"9.0"})");
    start();
  }

  std::filesystem::path inHome(const std::string& name) { return mac().path(ProductMachine::kHome) / name; }

  std::string installNamed(const std::string& name) {
    return reply(
        {"install", std::string(ProductMachine::kHome) + "/" + name, "--manifest", kManifest, "--without-checks"});
  }

  // No package was taken in: nothing of the staging directory is there, no tool ran, no part was changed.
  void expectNothingHappened() {
    EXPECT_FALSE(std::filesystem::exists(mac().path("/var/db/halvo/install-staging")));
    EXPECT_THAT(toolRuns(), IsEmpty());
    EXPECT_THAT(machine.components(), IsEmpty());
  }

  std::string installWithManifest(const std::string& manifest) {
    const PackageFiles package = machine.package({.name = "again", .folder = ProductMachine::kHome});
    mac().writeFile(package.manifest, manifest);
    return reply(ProductMachine::install(package, {"--without-checks"}));
  }
};

TEST_F(BadInputScenario, AMissingPackageIsRefused) {
  EXPECT_EQ(installNamed("missing.pkg"), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, ADirectoryIsRefused) {
  std::filesystem::create_directory(inHome("folder.pkg"));

  EXPECT_EQ(installNamed("folder.pkg"), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, ALinkToAGoodPackageIsRefused) {
  machine.package({.name = "good", .folder = ProductMachine::kHome});
  std::filesystem::create_symlink("good.pkg", inHome("link.pkg"));

  EXPECT_EQ(installNamed("link.pkg"), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, AFifoIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(::mkfifo(inHome("fifo.pkg").c_str(), 0600), 0);

  EXPECT_EQ(installNamed("fifo.pkg"), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, ADeviceIsRefused) {
  EXPECT_EQ(reply({"install", "/dev/null", "--manifest", kManifest, "--without-checks"}), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, AFileOverTheBoundIsRefused) {
  std::ofstream(inHome("huge.pkg")).put('x');
  std::filesystem::resize_file(inHome("huge.pkg"), 268'435'457);

  EXPECT_EQ(installNamed("huge.pkg"), kStagingFailedReply);
  expectNothingHappened();
}

TEST_F(BadInputScenario, AFileThatIsNoPackageIsRefused) {
  std::ofstream(inHome("text.pkg")) << "not a package\n";

  EXPECT_EQ(installNamed("text.pkg"), R"({"code":"untrusted_package","reason":"not_developer_id"})");
  EXPECT_THAT(machine.components(), IsEmpty());
}

TEST_F(BadInputScenario, TheRefusalNamesThePathInTheLog) {
  installNamed("missing.pkg");

  EXPECT_THAT(messagesIn(kInstallLog), testing::ElementsAre("REFUSED: could not stage /Users/user501/missing.pkg -> "
                                                            "/var/db/halvo/install-staging/incoming.pkg"));
}

class UselessManifest : public BadInputScenario,
                        public testing::WithParamInterface<std::pair<const char*, std::string>> {};

TEST_P(UselessManifest, CountsAsVersionZero) {
  machine.app(ProductMachine::install(machine.package({.name = "first", .version = "1.0"})));

  EXPECT_EQ(installWithManifest(GetParam().second), R"({"code":"downgrade","installed":"1.0","incoming":"0"})");
}

INSTANTIATE_TEST_SUITE_P(Table, UselessManifest,
                         testing::Values(std::pair("Empty", std::string()),
                                         std::pair("NotJSON", std::string("driver_version: 9")),
                                         std::pair("Number", std::string(R"({"driver_version":9})")),
                                         std::pair("Array", std::string(R"(["driver_version","9"])")),
                                         std::pair("Null", std::string(R"({"driver_version":null})")),
                                         std::pair("Deep", std::string(100'000, '[')),
                                         std::pair("Huge", R"({"other":")" + std::string(1'000'000, 'x') + "\"}")),
                         [](const auto& row) { return std::string(row.param.first); });

// Calls the helper as the application would, through a bus tool that carries the application's signature.
class ForgedAuthorization : public Scenario, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override { start(); }
};

TEST_P(ForgedAuthorization, OfAnyLengthIsRefusedWithoutAPrompt) {
  const std::string bus = machine.signedCopy("/usr/bin/busctl", "busctl", "com.halvo.app", "QX4TRM2ZL9");
  std::vector<std::string> command = {bus,
                                      "--address=unix:path=/var/run/mach/com.halvo.helper",
                                      "call",
                                      "com.halvo.helper",
                                      "/com/halvo/helper",
                                      "com.halvo.HalvoHelperProtocol",
                                      "prepareForRemovalWithAuthorization_acceptAudioInterruption_withReply_",
                                      "ayb",
                                      std::to_string(GetParam())};
  command.insert(command.end(), static_cast<std::size_t>(GetParam()), "65");
  command.emplace_back("true");

  const CommandResult result = mac().run(machine.user(), command);

  EXPECT_THAT(result.out, testing::HasSubstr(R"({\"code\":\"unauthorized\"})")) << result.err;
  EXPECT_THAT(toolRuns(), IsEmpty());
  EXPECT_EQ(mac().readState("authorization-prompts"), "");
}

INSTANTIATE_TEST_SUITE_P(Lengths, ForgedAuthorization, testing::Values(0, 1, 31, 32, 33, 64));

}  // namespace
}  // namespace halvo::sim
