#include <chrono>
#include <ctime>
#include <filesystem>
#include <utility>

#include "sim/demo/Stage.h"
#include "sim/demo/Walk.h"

namespace halvo::sim {
namespace {

constexpr const char* kPong = R"({"ok":true,"helper_version":6,"build_abi":1})";
constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
constexpr const char* kUnauthorized = R"({"code":"unauthorized"})";
constexpr const char* kRolledBack = R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})";

struct RefusedPackage {
  const char* title;
  const char* name;  // of the package and of its signature report
  const char* reason;
};

constexpr RefusedPackage kRefusedPackages[] = {
    {"A package without a signature", "unsigned", "unsigned"},
    {"A package that Apple did not notarise", "not-notarized", "not_notarized"},
    {"A package of another team", "wrong-team", "wrong_team"},
    {"A package whose certificate chain is cut short", "chain-truncated", "chain_truncated"},
    {"A package whose chain ends with somebody else", "unknown-authority", "unknown_authority"},
};

std::string untrusted(const std::string& reason) {
  return R"({"code":"untrusted_package","reason":")" + reason + "\"}";
}

std::string processText(std::optional<pid_t> pid) {
  return pid ? "process " + std::to_string(*pid) : std::string("no process");
}

// Snapshots are named by the second, and two installs within one share a folder: what an install changes on disk would
// depend on how fast this machine is.
void awaitNextSecond() {
  const std::time_t now = std::time(nullptr);
  waitUntil([now] { return std::time(nullptr) != now; });
}

}  // namespace

void walkFirstContact(Stage& stage) {
  Step start = stage.begin("launchd starts the helper on demand");
  start.remarks.push_back("before the first request: " + processText(stage.machine().helperProcess()));
  Stage::expect(start, !stage.machine().helperProcess(), "the helper should not be running yet");
  stage.request(start, {"ping"}, kPong);
  start.remarks.push_back("after it: " + processText(stage.machine().helperProcess()));
  Stage::expect(start, stage.machine().helperProcess().has_value(), "the helper should be running now");
  for (const std::string& line : stage.mac().systemLog()) start.remarks.push_back("log: " + line);
  stage.tell(std::move(start));

  stage.requestStep("Who is logged in graphically", {"users"}, R"({"uids":[501]})");
}

void walkInstalls(Stage& stage) {
  const PackageFiles good = stage.machine().package({.name = "Halvo-1.2.0", .version = "1.2.0"});
  const PackageFiles older = stage.machine().package({.name = "Halvo-1.1.9", .version = "1.1.9"});

  stage.requestStep("A first-generation install carries no authorization and is refused",
                    {"legacy", "install", good.path, "--manifest", good.manifest}, kUnauthorized);
  stage.requestStep("An install whose authorization never obtained the right is refused",
                    ProductMachine::install(good, {"--without-grant"}), kUnauthorized);

  Step install = stage.begin("A good package is installed");
  stage.request(install, ProductMachine::install(good), kInstalled);
  install.remarks.push_back("broker: " +
                            processText(stage.machine().job("system", "com.halvo.broker").value_or(JobState{}).pid));
  stage.tell(std::move(install));

  awaitNextSecond();
  stage.requestStep("The same version may be installed again", ProductMachine::install(good), kInstalled);
  stage.requestStep("A lower version is refused, naming both", ProductMachine::install(older),
                    R"({"code":"downgrade","installed":"1.2.0","incoming":"1.1.9"})");
}

void walkRefusedPackages(Stage& stage) {
  for (const auto& [title, name, reason] : kRefusedPackages) {
    const std::string file(name);
    const PackageFiles package = stage.machine().package({.name = file, .version = "1.3.0", .report = file + ".txt"});
    stage.requestStep(title, ProductMachine::install(package), untrusted(reason));
  }

  // Where the helper may read it, so that nothing but the link is against it.
  PackageFiles link =
      stage.machine().package({.name = "Halvo-1.3.0", .version = "1.3.0", .folder = ProductMachine::kHome});
  const std::string target = link.path;
  link.path = "/Users/user501/link.pkg";
  std::filesystem::create_symlink(target, stage.mac().path(ProductMachine::kHome) / "link.pkg");
  stage.requestStep("A package that is a symbolic link", ProductMachine::install(link, {"--without-checks"}),
                    untrusted("staging_failed"));
}

void walkAudio(Stage& stage) {
  const PackageFiles newer = stage.machine().package({.name = "Halvo-1.4.0", .version = "1.4.0"});
  stage.mac().writeState("audio-devices", "0\n1\n");

  stage.requestStep("Audio is running: the install would interrupt it and is refused", ProductMachine::install(newer),
                    R"({"code":"audio_active"})");
  awaitNextSecond();
  stage.requestStep("The same with the interruption accepted",
                    ProductMachine::install(newer, {"--accept-audio-interruption"}), kInstalled);
  stage.mac().writeState("audio-devices", "0\n0\n");
}

void walkRollback(Stage& stage) {
  const PackageFiles broken =
      stage.machine().package({.name = "Halvo-1.5.0", .version = "1.5.0", .extra = {"--truncate-payload", "60000"}});
  const TreeSnapshot before = stage.machine().components();

  awaitNextSecond();
  Step step = stage.begin("An installer that fails half way is rolled back");
  stage.request(step, ProductMachine::install(broken), kRolledBack);
  const std::vector<TreeChange> differences = changesBetween(before, stage.machine().components());
  for (const TreeChange& difference : differences) step.remarks.push_back(describe(difference));
  step.remarks.push_back("the four components, " + std::to_string(before.size()) + " files and folders, are " +
                         (differences.empty() ? "byte for byte what they were before" : "NOT what they were before"));
  Stage::expect(step, differences.empty(), "the four components should be byte for byte what they were before");
  stage.tell(std::move(step));
}

void walkStrangersAndIdleness(Stage& stage) {
  const auto program = stage.mac().path(ProductMachine::kAppProgram);
  const std::string stranger = stage.machine().signedCopy(program, "stranger", "com.example.stranger", "AB12CD34EF");

  Step refused = stage.begin("A client with another signature is refused");
  stage.requestWith(refused, {stranger, "ping"}, "");
  const std::string last = stage.mac().systemLog().empty() ? "" : stage.mac().systemLog().back();
  refused.remarks.push_back("log: " + last);
  Stage::expect(refused, last.find("halvo-helper: rejected unauthorized client pid=") != std::string::npos,
                "the log should tell of the refused client");
  stage.tell(std::move(refused));

  Step idle = stage.begin("After a minute without requests the helper exits, and the next request starts it again");
  const auto before = stage.machine().helperProcess();
  idle.remarks.push_back("while serving: " + processText(before));
  Stage::await(
      idle, "nobody asks for anything", [&] { return !stage.machine().helperProcess(); },
      "the helper should exit when nobody needs it");
  idle.remarks.push_back("after a minute of the machine's time: " + processText(stage.machine().helperProcess()));
  stage.request(idle, {"ping"}, kPong);
  idle.remarks.push_back("after the next request: " + processText(stage.machine().helperProcess()));
  Stage::expect(idle, stage.machine().helperProcess() != before, "a new process should have been started");
  stage.tell(std::move(idle));
}

void walkTurns(Stage& stage) {
  // The installer is held in the script of the package until this walk lets it go.
  const auto began = stage.mac().path("/tmp/began");
  const std::string script = std::string(ProductMachine::kDownloads) + "/wait";
  stage.mac().writeFile(script, "#!/bin/sh\n> /tmp/began\nwhile ! test -e /tmp/go-on; do sleep 0.02; done\n", 0755);
  const PackageFiles slow = stage.machine().package(
      {.name = "slow", .version = "1.6.0", .extra = {"--postinstall", stage.mac().path(script).string()}});

  awaitNextSecond();
  Step step = stage.begin("While a change is made, a question is answered at once and another change waits");
  Stage::Pending install = stage.send(step, ProductMachine::command(ProductMachine::install(slow)));
  Stage::expect(step, waitUntil([&] { return std::filesystem::exists(began); }), "the installer should run");
  stage.request(step, {"ping"}, kPong);
  Stage::Pending removal =
      stage.send(step, ProductMachine::command({"remove-bundle", "/Applications/Safari.app", "--without-checks"}));
  const bool waits = removal.result.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
  Stage::expect(step, waits, "the second change should wait for the first");
  stage.mac().writeFile("/tmp/go-on", "");
  stage.receive(step, std::move(install), kInstalled);
  stage.receive(step, std::move(removal), "false");
  step.waits.push_back({.reason = "for its turn: the install comes first",
                        .connection = step.requests.size(),
                        .began = step.requests.back().began,
                        .ended = step.requests.front().ended});
  stage.tell(std::move(step));
}

}  // namespace halvo::sim
