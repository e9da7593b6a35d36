// Kills the helper in the middle of what it does, and sees what is left and whether the next install makes it whole.
#include <algorithm>
#include <array>
#include <thread>

#include "tests/soaking/Leftovers.h"
#include "tests/soaking/Patient.h"
#include "tests/soaking/Soak.h"

namespace halvo::soak {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

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
  explicit Kills(unsigned seed) : random_(seed) {}

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

  void conclude() const { tell(patient_.recoveries()); }

 private:
  std::vector<std::string> argumentsOf(const Operation& operation) const {
    return operation.arguments.empty() ? patient_.installation() : operation.arguments;
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
    patient_.switchPackages();
    runWhole(operation);
    std::vector<ToolRun> runs;
    for (const sim::ToolCall& call : soak_.mac().calls()) {
      const ToolRun run{std::filesystem::path(call.tool).filename(), call.arguments.at(0), 1};
      const auto same = [&](const ToolRun& other) { return other.tool == run.tool && other.verb == run.verb; };
      runs.push_back({run.tool, run.verb, 1 + static_cast<int>(std::ranges::count_if(runs, same))});
    }
    patient_.recover(std::string(operation.name) + " without a kill");
    return runs;
  }

  milliseconds lengthOf(const Operation& operation) {
    patient_.switchPackages();
    soak_.reply({"ping"});
    const auto begin = Clock::now();
    runWhole(operation);
    const auto length = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    patient_.recover(std::string(operation.name) + " without a kill");
    return length;
  }

  void kill(pid_t process, const char* signal = "-9") {
    soak_.mac().run(0, {"/bin/sh", "-c", std::string("kill ") + signal + " " + std::to_string(process)});
  }

  void killAt(const Operation& operation, const ToolRun& run) {
    const std::string where =
        std::string(operation.name) + ", killed at " + run.tool + " " + run.verb + " " + std::to_string(run.number);
    patient_.switchPackages();
    soak_.mac().writeState("calls.jsonl", "");
    soak_.mac().writeState("faults/" + run.tool, "hang on " + run.verb + " call " + std::to_string(run.number) + "\n");
    auto result = soak_.machine.appAsync(argumentsOf(operation));
    require(sim::waitUntil([&] { return patient_.toolHangs(); }), where + ": the tool is never called");
    const auto helper = soak_.machine.helperProcess();
    // A helper that launchd has let go of already ends by itself.
    if (helper) kill(*helper);
    require(sim::waitUntil([&] { return soak_.machine.helperProcess() != helper || !helper; }), where + ": it lives");
    soak_.mac().writeState("faults/" + run.tool, "");
    judge(result.get(), operation, where);
    letTheHelperGo(operation);
    endHungTool(run, where);
    patient_.recover(where);
  }

  // A request that no helper had accepted yet is carried out by the next one, which goes a moment after its answer.
  void letTheHelperGo(const Operation& operation) {
    if (operation.endsTheHelper) sim::waitUntil([&] { return helperIsGone(); }, std::chrono::seconds(2));
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
    patient_.switchPackages();
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
    letTheHelperGo(operation);
    patient_.recover(where);
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
    patient_.requireNothingHalf(operation.arguments.empty(), where);
  }

  Patient patient_;
  SoakMachine& soak_ = patient_.soak();
  std::mt19937 random_;
  int cutOff_ = 0;
};

}  // namespace

void soakKills(const Plan& plan) {
  Kills kills(plan.seed);
  for (const Operation& operation : kOperations) kills.atEveryToolCall(operation);
  for (const Operation& operation : kOperations) kills.atRandomMoments(operation, plan.amount(200, 8));
  kills.conclude();
}

}  // namespace halvo::soak
