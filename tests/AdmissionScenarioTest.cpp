// Who may talk to the helper: any program, the application's own or a third party's, whose signature is the
// application's, and nobody else.
#include <fstream>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kSocket = "unix:path=/var/run/mach/com.halvo.helper";
constexpr const char* kMethod = "com.halvo.HalvoHelperProtocol.pingWithReply_";

struct Signer {
  const char* name;
  const char* identifier;
  const char* team;
};

class Stranger : public Scenario, public testing::WithParamInterface<Signer> {
 protected:
  void SetUp() override { start(); }
};

TEST_P(Stranger, IsRefusedLoggedAndDoesNotKeepTheApplicationOut) {
  const std::string program =
      machine.signedCopy(mac().path(ProductMachine::kAppProgram), "stranger", GetParam().identifier, GetParam().team);

  const CommandResult refused = mac().run(machine.user(), {program, "ping"});

  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.status, 0);
  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: rejected unauthorized client pid=")));
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

INSTANTIATE_TEST_SUITE_P(Table, Stranger,
                         testing::Values(Signer{"OtherIdentifier", "com.halvo.app2", "QX4TRM2ZL9"},
                                         Signer{"IdentifierInOtherCase", "com.halvo.App", "QX4TRM2ZL9"},
                                         Signer{"OtherTeam", "com.halvo.app", "AB12CD34EF"},
                                         Signer{"NoTeam", "com.halvo.app", ""}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Scenario, AnApplicationThatWasAlteredAfterSigningIsRefused) {
  start();
  const std::string program =
      machine.signedCopy(mac().path(ProductMachine::kAppProgram), "altered", "com.halvo.app", "QX4TRM2ZL9");
  ASSERT_EQ(mac().run(machine.user(), {program, "ping"}).status, 0);
  std::fstream file(mac().path(program), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(15);  // padding of the header, which nobody reads
  file.put('x');
  file.close();

  EXPECT_EQ(mac().run(machine.user(), {program, "ping"}).out, "");

  EXPECT_THAT(helperLog(), Contains("halvo-helper: client signature refused status=-67061"));
}

class ThirdPartyClient : public Scenario {
 protected:
  ThirdPartyClient() { start(); }

  CommandResult asTheApplication(const std::string& tool, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), machine.signedCopy("/usr/bin/" + tool, tool, "com.halvo.app", "QX4TRM2ZL9"));
    return mac().run(machine.user(), arguments);
  }

  CommandResult unsignedTool(const std::string& tool, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), machine.signedCopy("/usr/bin/" + tool, tool, tool, ""));
    return mac().run(machine.user(), arguments);
  }
};

const std::vector<std::string> kBusctlPing = {
    std::string("--address=") + kSocket, "call",          "com.halvo.helper", "/com/halvo/helper",
    "com.halvo.HalvoHelperProtocol",     "pingWithReply_"};
const std::vector<std::string> kGdbusPing = {
    "call",          "--address",         kSocket,    "--dest", "com.halvo.helper",
    "--object-path", "/com/halvo/helper", "--method", kMethod};
const std::vector<std::string> kDbusSendPing = {std::string("--peer=") + kSocket, "--print-reply", "/com/halvo/helper",
                                                kMethod};

TEST_F(ThirdPartyClient, BusctlGetsAnAnswer) {
  EXPECT_THAT(asTheApplication("busctl", kBusctlPing).out, HasSubstr(R"(\"helper_version\":6)"));
}

TEST_F(ThirdPartyClient, GdbusGetsAnAnswer) {
  const CommandResult result = asTheApplication("gdbus", kGdbusPing);

  EXPECT_THAT(result.out, HasSubstr(R"("helper_version":6)")) << result.err;
}

TEST_F(ThirdPartyClient, DbusSendGetsAnAnswer) {
  EXPECT_THAT(asTheApplication("dbus-send", kDbusSendPing).out, HasSubstr(R"("helper_version":6)"));
}

TEST_F(ThirdPartyClient, BusctlReadsTheInterface) {
  const CommandResult result =
      asTheApplication("busctl", {std::string("--address=") + kSocket, "introspect", "com.halvo.helper",
                                  "/com/halvo/helper", "com.halvo.HalvoHelperProtocol"});

  EXPECT_THAT(result.out,
              HasSubstr("installSystemPkgWithAuthorization_pkgPath_manifestJSON_acceptAudioInterruption_withReply_"));
}

TEST_F(ThirdPartyClient, AnUnknownMethodIsAnErrorAndTheHelperGoesOn) {
  std::vector<std::string> call = kBusctlPing;
  call.back() = "formatDiskWithReply_";

  EXPECT_NE(asTheApplication("busctl", call).status, 0);
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

TEST_F(ThirdPartyClient, WrongArgumentTypesAreAnErrorAndTheHelperGoesOn) {
  std::vector<std::string> call = kBusctlPing;
  call.insert(call.end(), {"s", "unexpected"});

  EXPECT_NE(asTheApplication("busctl", call).status, 0);
  EXPECT_EQ(reply({"ping"}), kPingReply);
}

struct ToolRow {
  const char* name;
  const char* tool;
  std::vector<std::string> ping;
};

class ThirdPartyWithoutTheApplicationsSignature : public ThirdPartyClient,
                                                  public testing::WithParamInterface<ToolRow> {};

TEST_P(ThirdPartyWithoutTheApplicationsSignature, IsToldNothingAndLogged) {
  const CommandResult refused = unsignedTool(GetParam().tool, GetParam().ping);

  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(helperLog(), Contains(StartsWith("halvo-helper: rejected unauthorized client pid=")));
}

INSTANTIATE_TEST_SUITE_P(Table, ThirdPartyWithoutTheApplicationsSignature,
                         testing::Values(ToolRow{"Busctl", "busctl", kBusctlPing},
                                         ToolRow{"Gdbus", "gdbus", kGdbusPing},
                                         ToolRow{"DbusSend", "dbus-send", kDbusSendPing}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo::sim
