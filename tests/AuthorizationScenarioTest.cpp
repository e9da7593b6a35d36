// Who may have the system changed: the right that the helper keeps, and the grants that it takes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string_view>
#include <thread>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kRightFile = "authorization-db/com.halvo.helper.manage-system.json";

class AuthorizationScenario : public Scenario {
 protected:
  std::string installReply() { return reply(ProductMachine::install(machine.package({}))); }

  // Makes a state file that holds up whoever reads it.
  void makeGate(const std::string& name) {
    const std::filesystem::path gate = mac().path("/sim/" + name);
    std::filesystem::remove(gate);
    if (::mkfifo(gate.c_str(), 0644) != 0) ADD_FAILURE() << gate << " cannot be made";
  }

  // Answers when somebody waits at the gate, and goes on waiting until the descriptor is closed.
  UniqueDescriptor somebodyAt(const std::string& name) {
    UniqueDescriptor held;
    EXPECT_TRUE(waitUntil([&] {
      held = UniqueDescriptor(::open(mac().path("/sim/" + name).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
      return held.valid();
    }));
    return held;
  }

  // The reply to an installation whose client does something else between the administrator's password and its request.
  template <typename Meanwhile>
  std::string replyWhenTheClientLingers(const Meanwhile& meanwhile) {
    makeGate("authorization-answer");
    auto install = machine.appAsync(ProductMachine::install(machine.package({})));
    UniqueDescriptor prompt = somebodyAt("authorization-answer");
    // The client reads the faults again when it turns the granted authorization into its external form.
    makeGate("faults/authorization");
    constexpr std::string_view kAnswer = "allow user501\n";
    EXPECT_EQ(::write(prompt.get(), kAnswer.data(), kAnswer.size()), static_cast<ssize_t>(kAnswer.size()));
    prompt.close();
    UniqueDescriptor lingering = somebodyAt("faults/authorization");
    meanwhile();
    mac().writeState("faults/authorization", "");
    lingering.close();
    return install.get().out;
  }
};

TEST_F(AuthorizationScenario, AnAdministratorsPasswordGrantsTheRequest) {
  mac().writeState("authorization-answer", "allow user501\n");
  start();

  EXPECT_EQ(installReply(), kInstalledReply);
}

TEST_F(AuthorizationScenario, ThePasswordOfAUserWhoIsNoAdministratorGrantsNothing) {
  mac().writeState("authorization-answer", "allow user502\n");
  start();

  const CommandResult install = machine.app(ProductMachine::install(machine.package({})));

  EXPECT_NE(install.status, 0);
  EXPECT_EQ(install.out, "");
  EXPECT_THAT(toolRuns(), testing::IsEmpty());
}

TEST_F(AuthorizationScenario, AGrantIsTakenFromAClientThatLingers) {
  start();

  EXPECT_EQ(replyWhenTheClientLingers([] {}), std::string(kInstalledReply) + "\n");
}

TEST_F(AuthorizationScenario, AGrantOlderThanFiveMinutesIsRefused) {
  mac().writeState("clock-rate", "200\n");
  start();

  const auto moreThanFiveMinutes = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1'600)); };

  EXPECT_EQ(replyWhenTheClientLingers(moreThanFiveMinutes), std::string(kUnauthorizedReply) + "\n");
  EXPECT_THAT(toolRuns(), testing::IsEmpty());
}

TEST_F(AuthorizationScenario, AGrantOfAnAdministratorWhoIsOneNoLongerIsRefused) {
  start();

  const auto dismiss = [&] { mac().writeFile("/etc/group", "wheel:*:0:root\nstaff:*:20:root\nadmin:*:80:root\n"); };

  EXPECT_EQ(replyWhenTheClientLingers(dismiss), std::string(kUnauthorizedReply) + "\n");
}

struct WeakRight {
  const char* name;
  const char* definition;
};

class RightTamperedWith : public AuthorizationScenario, public testing::WithParamInterface<WeakRight> {};

TEST_P(RightTamperedWith, IsRewrittenBeforeAnybodyIsServed) {
  mac().writeState(kRightFile, GetParam().definition);
  start();

  EXPECT_EQ(reply({"ping"}), kPingReply);

  const std::string right = mac().readState(kRightFile);
  EXPECT_THAT(right, HasSubstr(R"("class": "user")"));
  EXPECT_THAT(right, HasSubstr(R"("group": "admin")"));
  EXPECT_THAT(right, HasSubstr(R"("shared": false)"));
  EXPECT_THAT(right, Not(HasSubstr("mechanisms")));
  EXPECT_THAT(helperLog(), Contains(HasSubstr("registered status=0 sound=1")));
  EXPECT_EQ(reply({"finalize", "--without-grant"}), "false");
}

INSTANTIATE_TEST_SUITE_P(
    Table, RightTamperedWith,
    testing::Values(
        WeakRight{"AllowsEverybody", R"({"class":"allow"})"},
        WeakRight{"AllowsOtherUsers", R"({"class":"user","group":"staff","timeout":300})"},
        WeakRight{"AllowsTheSessionsOwner", R"({"class":"user","session-owner":true,"authenticate-user":false})"},
        WeakRight{"TakesSharedPasswords", R"({"class":"user","group":"admin","shared":true})"},
        WeakRight{"AsksOtherMechanisms", R"({"class":"user","group":"admin","mechanisms":["Plugin:allow"]})"}),
    [](const auto& row) { return row.param.name; });

struct Request {
  const char* name;
  std::vector<std::string> arguments;
  const char* refusal;
};

class RequestUnderAWeakRight : public AuthorizationScenario, public testing::WithParamInterface<Request> {};

TEST_P(RequestUnderAWeakRight, IsRefusedThoughTheRightGrantsIt) {
  mac().writeState(kRightFile, R"({"class":"allow"})");
  mac().writeState("faults/authorization", "right-set -60005\n");
  machine.package({});
  start();

  EXPECT_EQ(reply(GetParam().arguments), GetParam().refusal);

  EXPECT_EQ(reply({"ping"}), kPingReply);
  EXPECT_THAT(toolRuns(), testing::IsEmpty());
  EXPECT_THAT(helperLog(), Contains(HasSubstr("registered status=-60005 sound=0")));
}

INSTANTIATE_TEST_SUITE_P(Table, RequestUnderAWeakRight,
                         testing::Values(Request{"Install",
                                                 {"install", "/Users/user501/Downloads/Halvo.pkg", "--manifest",
                                                  "/Users/user501/Downloads/Halvo.json", "--without-checks"},
                                                 kUnauthorizedReply},
                                         Request{"PrepareRemoval", {"prepare-removal"}, kUnauthorizedReply},
                                         Request{"RemoveBundle", {"remove-bundle", "/Applications/Halvo.app"}, "false"},
                                         Request{"Finalize", {"finalize"}, "false"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
