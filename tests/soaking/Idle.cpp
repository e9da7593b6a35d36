#include "tests/soaking/Soak.h"

#include <sstream>

namespace halvo::soak {
namespace {

using sim::ProductMachine;

// How many times as fast the machine's clock runs: the helper is idle for 60 seconds in 150 milliseconds.
constexpr const char* kRate = "400";
constexpr const char* kIdleExit = "halvo-helper: idle for 60 s, exiting";
constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";

// An install that takes five minutes of the machine's time.
sim::PackageFiles slowPackage(SoakMachine& soak) {
  constexpr const char* kScript = "/Users/user501/Downloads/slow-postinstall";
  soak.mac().writeFile(kScript, "#!/bin/sh\nsleep 0.75\n", 0755);
  return soak.machine.package({.name = "slow", .extra = {"--postinstall", soak.mac().path(kScript).string()}});
}

void installSlowly(SoakMachine& soak, int times) {
  const auto package = slowPackage(soak);
  for (int i = 0; i < times; ++i) {
    const auto result = soak.machine.app(ProductMachine::install(package));
    require(result.out == std::string(kInstalled) + "\n",
            "an install longer than the idle period was answered: " + result.out + result.err);
  }
  tell(std::to_string(times) + " installs of five minutes each were not cut off by the idle exit");
}

void storm(SoakMachine& soak, int rounds, unsigned seed) {
  constexpr int kBurst = 34;
  const int before = soak.linesWith(kIdleExit);
  const std::string figures =
      outputOf(soak.mac().runAsync(soak.machine.user(), {soak.bulky(), "storm", std::to_string(rounds),
                                                         std::to_string(kBurst), std::to_string(seed)}),
               "the storm");
  const int exits = soak.linesWith(kIdleExit) - before;
  std::istringstream words(figures);
  int requests = 0;
  int repeated = 0;
  int slowest = 0;
  words >> requests >> repeated >> slowest;
  tell(std::to_string(requests) + " requests over " + std::to_string(exits) + " idle exits, each answered; " +
       std::to_string(repeated) + " met an exit and were made once more; slowest " + std::to_string(slowest) + " ms");
  require(requests >= rounds * kBurst, "the storm made " + std::to_string(requests) + " requests");
  require(exits >= rounds, "the helper exited only " + std::to_string(exits) + " times: no storm around an exit");
}

}  // namespace

void soakIdle(const Plan& plan) {
  SoakMachine soak;
  soak.mac().writeState("clock-rate", std::string(kRate) + "\n");
  soak.mac().start();
  installSlowly(soak, plan.amount(5, 1));
  storm(soak, plan.amount(300, 12), plan.seed);
  const auto job = soak.machine.job("system", "com.halvo.helper");
  require(job && job->lastExitStatus == 0, "the helper did not end by itself each time");
}

}  // namespace halvo::soak
