// Several clients at once.
#include <algorithm>
#include <iterator>

#include "tests/Scenario.h"

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::HasSubstr;

class ConcurrencyScenario : public Scenario {
 protected:
  ConcurrencyScenario() { start(); }

  PackageFiles waitingPackage(const std::string& name) {
    return machine.package({.name = name, .extra = {"--postinstall", waitingScript(mac())}});
  }

  // Whether the installer has written its payload and waits in the script.
  bool installerWaits() { return !mac().readFile("/Library/LaunchAgents/com.halvo.daemon.plist").empty(); }

  static bool done(const std::future<CommandResult>& result) {
    return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }
};

TEST_F(ConcurrencyScenario, APingIsAnsweredWhileAnInstallRuns) {
  auto install = machine.appAsync(ProductMachine::install(waitingPackage("slow")));
  ASSERT_TRUE(waitUntil([&] { return installerWaits(); }));

  EXPECT_EQ(reply({"ping"}), kPingReply);

  EXPECT_FALSE(done(install));
  letItGo(mac());
  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
}

TEST_F(ConcurrencyScenario, ASecondInstallWaitsForTheFirst) {
  auto first = machine.appAsync(ProductMachine::install(waitingPackage("slow")));
  ASSERT_TRUE(waitUntil([&] { return installerWaits(); }));

  // The second one's package is refused; were it not to wait, its clean-up would remove the first one's staged copy.
  auto second = machine.appAsync(ProductMachine::install(machine.package({.name = "bad", .report = "unsigned.txt"})));
  // A request that overtakes the second one proves that the helper has had the time to begin it.
  EXPECT_EQ(reply({"users"}), R"({"uids":[501]})");
  EXPECT_FALSE(done(second));
  EXPECT_THAT(messagesIn(kInstallLog), testing::Not(Contains(HasSubstr("REFUSED"))));

  letItGo(mac());
  EXPECT_EQ(first.get().out, std::string(kInstalledReply) + "\n");
  EXPECT_THAT(second.get().out, HasSubstr(R"("reason":"unsigned")"));
}

TEST_F(ConcurrencyScenario, AnInstallThatOutlivesTheIdlePeriodIsNotCutOff) {
  mac().stop();
  mac().writeState("clock-rate", "200\n");
  mac().start();
  auto install = machine.appAsync(ProductMachine::install(waitingPackage("slow")));
  ASSERT_TRUE(waitUntil([&] { return installerWaits(); }));

  // At this rate the idle period passes in less than half a second.
  EXPECT_FALSE(waitUntil([&] { return !machine.helperProcess().has_value(); }, std::chrono::milliseconds(1200)));
  letItGo(mac());

  EXPECT_EQ(install.get().out, std::string(kInstalledReply) + "\n");
}

TEST_F(ConcurrencyScenario, TwentyClientsAtOnceAreAllAnswered) {
  std::vector<std::future<CommandResult>> pings(20);

  std::ranges::generate(pings, [&] { return machine.appAsync({"ping"}); });

  std::vector<std::string> replies;
  std::ranges::transform(pings, std::back_inserter(replies), [](auto& ping) { return ping.get().out; });
  EXPECT_THAT(replies, testing::Each(std::string(kPingReply) + "\n"));
}

}  // namespace
}  // namespace halvo::sim
