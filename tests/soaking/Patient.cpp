#include "tests/soaking/Patient.h"

#include <algorithm>
#include <chrono>

namespace halvo::soak {
namespace {

constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
constexpr const char* kStagingFailed = R"({"code":"untrusted_package","reason":"staging_failed"})";
constexpr const char* kStagedPackage = "/private/var/db/halvo/install-staging/incoming.pkg";
constexpr const char* kSnapshots = "/private/var/db/halvo/install-rollback";
// launchd waits ten seconds between two starts of a helper: a fifth of a second at this rate.
constexpr const char* kRate = "50\n";

}  // namespace

Patient::Patient() {
  soak_.mac().writeState("clock-rate", kRate);
  // The manifest names a high version, so that either may be installed over the other.
  for (const char* version : {"1.2.0", "1.3.0"}) {
    packages_.push_back(soak_.machine.package({.name = version, .version = version}));
    soak_.mac().writeFile(packages_.back().manifest, R"({"driver_version":"9.0"})");
  }
  soak_.mac().start();
  for (int i = 0; i < 2; ++i) {
    switchPackages();
    require(install() == kInstalled, "the first install fails");
    trees_[fresh_] = soak_.machine.components();
  }
  waitForTools("before the first kill");
  rest_ = restOf(soak_);
  for (const char* program : {"halvo-helper", "halvo-broker", "halvo-daemon", "coreaudiod"}) {
    require(std::ranges::count(rest_.processes, program) == 1,
            std::string(program) + " does not run once in a whole machine");
  }
}

std::vector<std::string> Patient::installation() const { return sim::ProductMachine::install(packages_[fresh_]); }

std::string Patient::install() { return soak_.reply(installation()); }

bool Patient::toolHangs() {
  const auto calls = soak_.mac().calls();
  return !calls.empty() && calls.back().status == -1;
}

void Patient::requireNothingHalf(bool install, const std::string& where) {
  if (!toolHangs()) waitForTools(where);
  const sim::TreeSnapshot none;
  const auto found = standings(soak_.machine.components(), trees_[1 - fresh_], install ? trees_[fresh_] : none);
  const auto allowed = [&](Standing standing) {
    if (install) return standing == Standing::old || standing == Standing::fresh;
    return standing == Standing::old || standing == Standing::absent || standing == Standing::partOfOld;
  };
  require(std::ranges::all_of(found, allowed), where + ": " + describe(found));
  // A plain file is removed in one step; only the driver is a folder.
  require(std::ranges::count(found.begin() + 1, found.end(), Standing::partOfOld) == 0, where + ": " + describe(found));
}

void Patient::waitForTools(const std::string& where) {
  const auto toolsEnded = [&] {
    return std::ranges::none_of(soak_.census(), [](const auto& process) { return isTool(process.name); });
  };
  require(sim::waitUntil(toolsEnded, std::chrono::seconds(20)), where + ": a tool does not end");
}

void Patient::requireService(const std::string& where) {
  if (soak_.machine.app({"ping"}).status == 0) return;
  require(soak_.mac().readState("registered-services").empty() || !soak_.machine.job("system", "com.halvo.helper"),
          where + ": the helper is registered and does not answer");
  soak_.machine.reinstallApplication();
  require(soak_.machine.app({"ping"}).status == 0, where + ": the helper that was registered anew does not answer");
}

std::ptrdiff_t Patient::snapshots() {
  std::error_code error;
  return std::distance(std::filesystem::directory_iterator(soak_.mac().path(kSnapshots), error), {});
}

void Patient::clearStagedPackageAway(const std::string& where) {
  if (!soak_.stands(kStagedPackage)) return;
  const std::string refusal = install();
  require(refusal == kStagingFailed, where + ": with a staged package left over, an install is answered " + refusal);
  ++stagingFailures_;
}

void Patient::recover(const std::string& where) {
  requireService(where);
  const std::ptrdiff_t before = snapshots();
  clearStagedPackageAway(where);
  const std::string reply = install();
  require(reply == kInstalled, where + ": the install afterwards is answered " + reply);
  ++recoveries_;
  requireWhole(where);
  require(snapshots() <= before + 1, where + ": one install made more than one snapshot");
}

void Patient::requireWhole(const std::string& where) {
  const auto found = standings(soak_.machine.components(), {}, trees_[fresh_]);
  require(std::ranges::all_of(found, [](Standing standing) { return standing == Standing::fresh; }),
          where + ": after the next install: " + describe(found));
  // A connection that was just closed is let go of a moment later, and a timer takes a thread for a moment.
  Rest rest;
  const auto atRest = [&] {
    rest = restOf(soak_);
    return rest == rest_;
  };
  sim::waitUntil(atRest, std::chrono::seconds(5));
  requireSame(rest_, rest, where);
}

std::string Patient::recoveries() const {
  return std::to_string(recoveries_) + " installs afterwards made the product whole; " +
         std::to_string(stagingFailures_) + " of them after the one refusal that clears a staged package away";
}

}  // namespace halvo::soak
