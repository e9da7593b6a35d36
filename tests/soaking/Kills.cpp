// Kills the helper in the middle of what it does, and sees what is left and whether the next install makes it whole.
#include <algorithm>
#include <array>
#include <thread>

#include "tests/soaking/Leftovers.h"
#include "tests/soaking/Soak.h"

namespace halvo::soak {
namespace {

using sim::ProductMachine;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
constexpr const char* kStagingFailed = R"({"code":"untrusted_package","reason":"staging_failed"})";
constexpr const char* kStagedPackage = "/private/var/db/halvo/install-staging/incoming.pkg";
constexpr const char* kSnapshots = "/private/var/db/halvo/install-rollback";
// launchd waits ten seconds between two starts of a helper: a fifth of a second at this rate.
constexpr const char* kRate = "50\n";

struct Operation {
  const char* name;
  std::vector<std::string> arguments;  // none: an install
  bool endsTheHelper;
};

const std::array<Operation, 3> kOperations = {Operation{"install", {}, false},
                                              Operation{"uninstall", {"prepare-removal"}, false},
                                              Operation{"final removal", {"finalize"}, true}};

// A tool's run, so that it can be found again in another run of the same operation.
struct ToolRun {
  std::string tool;
  std::string verb;
  int number;  // among the runs of this tool with this verb
};

class Kills {
 public:
  explicit Kills(unsigned seed) : random_(seed) {
    soak_.mac().writeState("clock-rate", kRate);
    // The manifest names a high version, so that either may be installed over the other.
    for (const char* version : {"1.2.0", "1.3.0"}) {
      packages_.push_back(soak_.machine.package({.name = version, .version = version}));
      soak_.mac().writeFile(packages_.back().manifest, R"({"driver_version":"9.0"})");
    }
    soak_.mac().start();
    learn();
  }

  void atEveryToolCall(const Operation& operation) {
    const std::vector<ToolRun> runs = toolRunsOf(operation);
    for (const ToolRun& run : runs) killAt(operation, run);
    tell(std::string(operation.name) + ": killed at each of its " + std::to_string(runs.size()) + " tool calls");
  }

  void atRandomMoments(const Operation& operation, int times) {
    cutOff_ = 0;
    const milliseconds length = lengthOf(operation);
    for (int i = 0; i < times; ++i) killAfter(operation, length);
    tell(std::string(operation.name) + ": killed at " + std::to_string(times) + " random moments of its " +
         std::to_string(length.count()) + " ms, " + std::to_string(cutOff_) + " times before it was answered");
  }

  void conclude() const {
    tell(std::to_string(recoveries_) + " installs afterwards made the product whole; " +
         std::to_string(stagingFailures_) + " of them after the one refusal that clears a staged package away");
  }

 private:
  // What whole installations of both packages look like, and the machine at rest.
  void learn() {
    for (int i = 0; i < 2; ++i) {
      switchPackages();
      require(install() == kInstalled, "the first install fails");
      trees_[fresh_] = soak_.machine.components();
    }
    waitForRest("before the first kill");
    rest_ = restOf(soak_);
  }

  void switchPackages() { fresh_ = 1 - fresh_; }
  std::string install() { return soak_.reply(ProductMachine::install(packages_[fresh_])); }

  std::vector<std::string> argumentsOf(const Operation& operation) const {
    return operation.arguments.empty() ? ProductMachine::install(packages_[fresh_]) : operation.arguments;
  }

  bool helperIsGone() { return !soak_.machine.helperProcess(); }

  // Runs it to its end.
  void runWhole(const Operation& operation) {
    soak_.mac().writeState("calls.jsonl", "");
    const auto result = soak_.machine.app(argumentsOf(operation));
    require(result.status == 0, std::string(operation.name) + " fails without any kill: " + result.out + result.err);
    if (operation.endsTheHelper) require(sim::waitUntil([&] { return helperIsGone(); }), "the helper does not go");
  }

  std::vector<ToolRun> toolRunsOf(const Operation& operation) {
    switchPackages();
    runWhole(operation);
    std::vector<ToolRun> runs;
    for (const sim::ToolCall& call : soak_.mac().calls()) {
      const ToolRun run{std::filesystem::path(call.tool).filename(), call.arguments.at(0), 1};
      const auto same = [&](const ToolRun& other) { return other.tool == run.tool && other.verb == run.verb; };
      runs.push_back({run.tool, run.verb, 1 + static_cast<int>(std::ranges::count_if(runs, same))});
    }
    recover(std::string(operation.name) + " without a kill");
    return runs;
  }

  milliseconds lengthOf(const Operation& operation) {
    switchPackages();
    soak_.reply({"ping"});
    const auto begin = Clock::now();
    runWhole(operation);
    const auto length = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    recover(std::string(operation.name) + " without a kill");
    return length;
  }

  void kill(pid_t process, const char* signal = "-9") {
    soak_.mac().run(0, {"/bin/sh", "-c", std::string("kill ") + signal + " " + std::to_string(process)});
  }

  void killAt(const Operation& operation, const ToolRun& run) {
    const std::string where =
        std::string(operation.name) + ", killed at " + run.tool + " " + run.verb + " " + std::to_string(run.number);
    switchPackages();
    soak_.mac().writeState("calls.jsonl", "");
    soak_.mac().writeState("faults/" + run.tool, "hang on " + run.verb + " call " + std::to_string(run.number) + "\n");
    auto result = soak_.machine.appAsync(argumentsOf(operation));
    require(sim::waitUntil([&] { return toolHangs(); }), where + ": the tool is never called");
    const auto helper = soak_.machine.helperProcess();
    // A helper that launchd has let go of already ends by itself.
    if (helper) kill(*helper);
    require(sim::waitUntil([&] { return soak_.machine.helperProcess() != helper || !helper; }), where + ": it lives");
    soak_.mac().writeState("faults/" + run.tool, "");
    judge(result.get(), operation, where);
    endHungTool(run, where);
    recover(where);
  }

  bool toolHangs() {
    const auto calls = soak_.mac().calls();
    return !calls.empty() && calls.back().status == -1;
  }

  // The tools outlive the helper; one that hangs is ended here, as a person would.
  void endHungTool(const ToolRun& run, const std::string& where) {
    int ended = 0;
    for (const ProcessFigures& process : soak_.census()) {
      if (!isTool(process.name)) continue;
      require(process.name == run.tool, where + ": a " + process.name + " is left over");
      kill(process.pid);
      ++ended;
    }
    require(ended <= 1, where + ": " + std::to_string(ended) + " tools are left over");
  }

  void killAfter(const Operation& operation, milliseconds length) {
    switchPackages();
    soak_.mac().writeState("calls.jsonl", "");
    soak_.reply({"ping"});
    const auto helper = soak_.machine.helperProcess();
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(length).count();
    const auto moment = std::uniform_int_distribution<std::int64_t>(0, microseconds)(random_);
    const std::string where = std::string(operation.name) + ", killed after " + std::to_string(moment) + " us";
    auto result = soak_.machine.appAsync(argumentsOf(operation));
    std::this_thread::sleep_for(std::chrono::microseconds(moment));
    if (helper) kill(*helper);
    judge(result.get(), operation, where);
    waitForRest(where);
    recover(where);
  }

  // The client either got its answer or was told that it is unknown how far the helper came.
  void judge(const sim::CommandResult& result, const Operation& operation, const std::string& where) {
    constexpr int kInterrupted = 4;
    if (result.status == kInterrupted) {
      ++cutOff_;
      require(result.err.find("It is unknown whether the request was begun.") != std::string::npos,
              where + ": the client says " + result.err);
    } else {
      require(result.status == 0,
              where + ": the client ended with " + std::to_string(result.status) + ": " + result.out + result.err);
    }
    judgeComponents(operation, where);
  }

  // While the installer still runs, its part of the work is not judged.
  void judgeComponents(const Operation& operation, const std::string& where) {
    waitForRest(where, Hung::mayBe);
    const bool installs = operation.arguments.empty();
    const sim::TreeSnapshot none;
    const auto found = standings(soak_.machine.components(), trees_[1 - fresh_], installs ? trees_[fresh_] : none);
    const auto allowed = [&](Standing standing) {
      if (installs) return standing == Standing::old || standing == Standing::fresh;
      return standing == Standing::old || standing == Standing::absent || standing == Standing::partOfOld;
    };
    require(std::ranges::all_of(found, allowed), where + ": " + soak::describe(found));
    // A plain file is removed in one step; only the driver is a folder.
    require(std::ranges::count(found.begin() + 1, found.end(), Standing::partOfOld) == 0,
            where + ": " + soak::describe(found));
  }

  enum class Hung { never, mayBe };

  void waitForRest(const std::string& where, Hung hung = Hung::never) {
    const auto toolsEnded = [&] {
      if (hung == Hung::mayBe && toolHangs()) return true;
      return std::ranges::none_of(soak_.census(), [](const auto& process) { return isTool(process.name); });
    };
    require(sim::waitUntil(toolsEnded, std::chrono::seconds(20)), where + ": a tool does not end");
  }

  void requireService(const std::string& where) {
    if (soak_.machine.app({"ping"}).status == 0) return;
    require(soak_.mac().readState("registered-services").empty() || !soak_.machine.job("system", "com.halvo.helper"),
            where + ": the helper is registered and does not answer");
    soak_.machine.reinstallApplication();
    require(soak_.machine.app({"ping"}).status == 0, where + ": the helper that was registered anew does not answer");
  }

  std::ptrdiff_t snapshots() {
    std::error_code error;
    return std::distance(std::filesystem::directory_iterator(soak_.mac().path(kSnapshots), error), {});
  }

  void recover(const std::string& where) {
    requireService(where);
    const std::ptrdiff_t before = snapshots();
    const bool staged = soak_.stands(kStagedPackage);
    if (staged) {
      const std::string refusal = install();
      require(refusal == kStagingFailed,
              where + ": with a staged package left over, an install is answered " + refusal);
      ++stagingFailures_;
    }
    const std::string reply = install();
    require(reply == kInstalled, where + ": the install afterwards is answered " + reply);
    ++recoveries_;
    requireWhole(where);
    require(snapshots() <= before + 1, where + ": one install made more than one snapshot");
  }

  void requireWhole(const std::string& where) {
    const auto found = standings(soak_.machine.components(), {}, trees_[fresh_]);
    require(std::ranges::all_of(found, [](Standing standing) { return standing == Standing::fresh; }),
            where + ": after the next install: " + soak::describe(found));
    const auto running = [&] { return restOf(soak_).processes == rest_.processes; };
    sim::waitUntil(running, std::chrono::seconds(5));
    requireSame(rest_, restOf(soak_), where);
  }

  SoakMachine soak_;
  std::mt19937 random_;
  std::vector<sim::PackageFiles> packages_;
  std::array<sim::TreeSnapshot, 2> trees_;
  std::size_t fresh_ = 0;  // the package that is installed next
  Rest rest_;
  int cutOff_ = 0;
  int recoveries_ = 0;
  int stagingFailures_ = 0;
};

}  // namespace

void soakKills(const Plan& plan) {
  Kills kills(plan.seed);
  for (const Operation& operation : kOperations) kills.atEveryToolCall(operation);
  for (const Operation& operation : kOperations) kills.atRandomMoments(operation, plan.amount(200, 8));
  kills.conclude();
}

}  // namespace halvo::soak
