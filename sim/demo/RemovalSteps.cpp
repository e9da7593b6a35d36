#include <filesystem>
#include <utility>

#include "sim/demo/Stage.h"
#include "sim/demo/Walk.h"

namespace halvo::sim {
namespace {

constexpr const char* kRemoved = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
constexpr const char* kIncomplete = R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})";
constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
constexpr const char* kBrokerProgram = "/Library/PrivilegedHelperTools/halvo-broker";

// The jobs that launchd knows, each with its process.
std::string jobTable(Stage& stage) {
  std::string table;
  for (const JobState& job : stage.mac().jobs()) {
    table += (table.empty() ? "" : ", ") + job.domain + "/" + job.label;
  }
  return table;
}

void refuseBundle(Stage& stage, Step& step, const std::string& path) {
  stage.request(step, {"remove-bundle", path, "--without-checks"}, "false");
  step.remarks.push_back("log: " + stage.mac().systemLog().back());
}

void removeBundle(Stage& stage) {
  std::filesystem::create_directories(stage.mac().path("/Users/user501") / "Halvo.app");
  std::filesystem::create_symlink("/System/Library", stage.mac().path("/tmp") / "Halvo.app");

  Step refused = stage.begin("Paths that are not the product's bundle are refused");
  refuseBundle(stage, refused, "Applications/Halvo.app");
  refuseBundle(stage, refused, "/Applications/../Applications/Halvo.app");
  refuseBundle(stage, refused, "/Applications/Safari.app");
  refuseBundle(stage, refused, "/Users/user501/Halvo.app");
  refuseBundle(stage, refused, "/tmp/Halvo.app");
  stage.tell(std::move(refused));

  std::filesystem::remove(stage.mac().path("/tmp") / "Halvo.app");
  std::filesystem::create_symlink("/Applications/Halvo.app", stage.mac().path("/tmp") / "Halvo.app");
  Step removed = stage.begin("The bundle is removed, named through a link, by the application that runs from it");
  stage.request(removed, {"remove-bundle", "/tmp/Halvo.app"}, "true");
  Stage::expect(removed, !std::filesystem::exists(stage.mac().path("/Applications/Halvo.app")),
                "the bundle should be gone");
  stage.tell(std::move(removed));
}

void removeHelper(Stage& stage, const std::string& runningApplication) {
  Step step = stage.begin("The helper takes itself away, asked by the application that still runs");
  const std::size_t toolsBefore = stage.mac().calls().size();
  stage.requestWith(step, {runningApplication, "finalize"}, "true");
  // launchctl outlives the helper that it ends, and is on record when it has ended itself.
  Stage::await(
      step, "the helper answers before it goes",
      [&] {
        return !stage.machine().job("system", "com.halvo.helper").has_value() &&
               stage.mac().calls().size() > toolsBefore;
      },
      "launchd should not know the helper any more");
  step.remarks.push_back("jobs after: " + jobTable(stage));
  stage.requestWith(step, {runningApplication, "ping"}, "");
  stage.tell(std::move(step));
}

}  // namespace

void walkUninstall(Stage& stage) {
  stage.mac().writeState("audio-devices", "1\n");
  stage.requestStep("Audio is running: the removal would interrupt it and is refused", {"prepare-removal"},
                    R"({"code":"audio_active"})");

  Step accepted = stage.begin("The same with the interruption accepted: every part is removed");
  accepted.remarks.push_back("jobs before: " + jobTable(stage));
  stage.request(accepted, {"prepare-removal", "--accept-audio-interruption"}, kRemoved);
  accepted.remarks.push_back("jobs after: " + jobTable(stage));
  Stage::expect(accepted, stage.machine().components().empty(), "nothing of the four parts should be left");
  stage.tell(std::move(accepted));
  stage.mac().writeState("audio-devices", "0\n");

  // A folder where the broker's program should be: the removal unlinks files only.
  std::filesystem::create_directories(stage.mac().path(kBrokerProgram));
  Step leftover = stage.begin("A leftover that cannot be removed is reported and named in the log");
  stage.request(leftover, {"prepare-removal"}, kIncomplete);
  const std::string last = splitLines(stage.mac().readFile("/var/log/halvo-uninstall.log")).back();
  leftover.remarks.push_back("log: " + last);
  Stage::expect(leftover, last.ends_with(std::string("uninstall incomplete; leftover: ") + kBrokerProgram),
                "the log should name the leftover");
  stage.tell(std::move(leftover));
  std::filesystem::remove(stage.mac().path(kBrokerProgram));
}

void walkWholeRemoval(Stage& stage) {
  // An application that has started goes on when its bundle is removed. Here each request is a program of its own, so a
  // copy of it that lies elsewhere stands in.
  const auto program = stage.mac().path(ProductMachine::kAppProgram);
  const std::string running = stage.machine().signedCopy(program, "running-application", "com.halvo.app", "QX4TRM2ZL9");
  removeBundle(stage);
  removeHelper(stage, running);
}

void walkReinstall(Stage& stage) {
  const PackageFiles package = stage.machine().package({.name = "fresh", .version = "1.0.0"});
  Step step = stage.begin("The application is put back and registers its helper, and a fresh install starts over");
  stage.machine().reinstallApplication();
  stage.request(step, ProductMachine::install(package), kInstalled);
  step.remarks.push_back("jobs after: " + jobTable(stage));
  stage.tell(std::move(step));
}

}  // namespace halvo::sim
