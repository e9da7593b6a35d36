#include "sim/demo/Stage.h"

#include <filesystem>
#include <map>
#include <utility>

#include "sim/demo/Meaning.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

// Everything that an install or a removal may touch.
const std::vector<std::string>& watchedFolders() {
  static const std::vector<std::string> folders = {"/Applications",    "/Library",         "/private/var/db",
                                                   "/private/var/log", "/private/var/run", "/private/var/tmp"};
  return folders;
}

// The system's own records say nothing about the product: its log, and the sockets that launchd holds.
bool isBackground(const TreeSnapshot::value_type& entry) {
  return entry.first == "/private/var/log/system.log" || entry.first.starts_with("/private/var/run/mach");
}

// The command as a person would type it: without the folder of the program.
std::string typed(std::vector<std::string> command) {
  command.front() = std::filesystem::path(command.front()).filename().string();
  return joined(command, " ");
}

}  // namespace

Stage::Stage(Listener tell) : tell_(std::move(tell)) {
  mac().writeState("clock-rate", "20\n");
  mac().start();
}

Step Stage::begin(std::string title) {
  callsBefore_ = mac().calls().size();
  Step step;
  step.title = std::move(title);
  step.before = tree();
  return step;
}

void Stage::tell(Step step) {
  const std::vector<ToolCall> calls = mac().calls();
  step.tools.assign(calls.begin() + static_cast<std::ptrdiff_t>(callsBefore_), calls.end());
  step.after = tree();
  tell_(std::move(step));
}

void Stage::request(Step& step, const std::vector<std::string>& arguments, const std::string& expectedReply) {
  requestWith(step, ProductMachine::command(arguments), expectedReply);
}

void Stage::requestWith(Step& step, const std::vector<std::string>& command, const std::string& expectedReply) {
  receive(step, send(step, command), expectedReply);
}

void Stage::requestStep(std::string title, const std::vector<std::string>& arguments,
                        const std::string& expectedReply) {
  Step step = begin(std::move(title));
  request(step, arguments, expectedReply);
  tell(std::move(step));
}

Stage::Pending Stage::send(Step& step, const std::vector<std::string>& command) {
  Request request;
  request.command = typed(command);
  request.began = uptimeMicroseconds();
  step.requests.push_back(request);
  return {.request = step.requests.size() - 1,
          .logged = mac().systemLog().size(),
          .result = mac().runAsync(machine_.user(), command)};
}

void Stage::receive(Step& step, Pending pending, const std::string& expectedReply) {
  const CommandResult result = pending.result.get();
  Request& request = step.requests.at(pending.request);
  request.ended = uptimeMicroseconds();
  request.reply = result.out.substr(0, result.out.find('\n'));
  request.status = result.status;
  request.explanation = result.err;
  std::vector<std::string> log = mac().systemLog();
  log.erase(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(pending.logged));
  request.log = joined(log, "\n");
  for (const std::string& line : splitLines(result.err)) step.remarks.push_back(line);
  expect(step, request.reply == expectedReply, "the reply to " + request.command + " should be " + expectedReply);
}

void Stage::await(Step& step, const std::string& reason, const std::function<bool()>& condition,
                  const std::string& surprise) {
  Wait wait{.reason = reason, .began = uptimeMicroseconds()};
  expect(step, waitUntil(condition), surprise);
  wait.ended = uptimeMicroseconds();
  step.waits.push_back(wait);
}

void Stage::expect(Step& step, bool holds, const std::string& surprise) {
  if (!holds) step.surprises.push_back(surprise);
}

TreeSnapshot Stage::tree() const {
  TreeSnapshot tree = machine_.mac().snapshotTree(watchedFolders());
  std::erase_if(tree, isBackground);
  return tree;
}

}  // namespace halvo::sim
