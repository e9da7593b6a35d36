#include "sim/demo/Stage.h"

#include <filesystem>
#include <iomanip>
#include <utility>

namespace halvo::sim {
namespace {

constexpr int kLabelWidth = 10;

// Everything that an install or a removal may touch.
const std::vector<std::string>& watchedFolders() {
  static const std::vector<std::string> folders = {"/Applications",    "/Library",         "/private/var/db",
                                                   "/private/var/log", "/private/var/run", "/private/var/tmp"};
  return folders;
}

// The system's own records say nothing about the product: its log, and the sockets that launchd holds.
bool isBackground(const std::string& path) {
  return path == "/private/var/log/system.log" || path.starts_with("/private/var/run/mach");
}

std::string joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

// The command as a person would type it: without the folder of the program.
std::string typed(std::vector<std::string> command) {
  command.front() = std::filesystem::path(command.front()).filename().string();
  return joined(command);
}

// The changes as lines. A folder that came or went stands for what it holds.
std::vector<std::string> summarised(const std::vector<TreeChange>& changes) {
  std::vector<std::string> lines;
  std::string folder;
  TreeChange::Kind kind{};
  std::size_t below = 0;
  const auto finish = [&] {
    if (below != 0) lines.back() += " and what is in it, " + std::to_string(below) + " items";
    below = 0;
  };
  for (const TreeChange& change : changes) {
    if (isBackground(change.path)) continue;
    const bool covered = !lines.empty() && change.kind == kind && change.path.starts_with(folder + "/");
    if (covered && kind != TreeChange::Kind::changed) {
      ++below;
      continue;
    }
    finish();
    lines.push_back(describe(change));
    folder = change.path;
    kind = change.kind;
  }
  finish();
  return lines;
}

}  // namespace

StepReport::StepReport(std::ostream& out) : out_(out) {}

void StepReport::tell(const Step& step) {
  told_.push_back(step);
  out_ << "\n== " << told_.size() << ". " << step.title << "\n";
  list("request", step.requests);
  list("reply", step.replies);
  list("tools", step.tools);
  list("on disk", step.changes);
  list("note", step.remarks);
  list("SURPRISE", step.surprises);
  out_ << std::flush;
}

bool StepReport::conclude() const {
  out_ << "\n== Summary\n";
  bool asExpected = true;
  for (std::size_t i = 0; i < told_.size(); ++i) {
    const bool fine = told_[i].surprises.empty();
    asExpected = asExpected && fine;
    out_ << std::setw(4) << i + 1 << "  " << (fine ? "as expected" : "DIFFERENT  ") << "  " << told_[i].title << "\n";
  }
  if (asExpected) {
    out_ << "\nAll " << told_.size() << " steps went as expected.\n";
    return true;
  }
  for (const Step& step : told_) {
    for (const std::string& surprise : step.surprises) out_ << "\nDifferent in \"" << step.title << "\": " << surprise;
  }
  out_ << "\n";
  return false;
}

void StepReport::list(std::string_view label, const std::vector<std::string>& lines) const {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    out_ << "  " << std::left << std::setw(kLabelWidth) << (i == 0 ? label : "") << lines[i] << "\n" << std::right;
  }
}

Stage::Stage(StepReport& report) : report_(report) {
  mac().writeState("clock-rate", "20\n");
  mac().start();
}

Step Stage::begin(std::string title) {
  callsBefore_ = mac().calls().size();
  treeBefore_ = mac().snapshotTree(watchedFolders());
  Step step;
  step.title = std::move(title);
  return step;
}

void Stage::tell(Step step) {
  const std::vector<ToolCall> calls = mac().calls();
  for (std::size_t i = callsBefore_; i < calls.size(); ++i) {
    step.tools.push_back(calls[i].tool + " " + joined(calls[i].arguments) + "  -> " + std::to_string(calls[i].status));
  }
  step.changes = summarised(changesBetween(treeBefore_, mac().snapshotTree(watchedFolders())));
  if (step.changes.empty()) step.changes.emplace_back("nothing changed");
  report_.tell(step);
}

void Stage::request(Step& step, const std::vector<std::string>& arguments, const std::string& expectedReply) {
  std::vector<std::string> command = {ProductMachine::kAppProgram};
  command.insert(command.end(), arguments.begin(), arguments.end());
  requestWith(step, command, expectedReply);
}

void Stage::requestWith(Step& step, const std::vector<std::string>& command, const std::string& expectedReply) {
  step.requests.push_back(typed(command));
  const CommandResult result = mac().run(machine_.user(), command);
  const std::string reply = result.out.substr(0, result.out.find('\n'));
  step.replies.push_back((reply.empty() ? "(none)" : reply) + "   exit status " + std::to_string(result.status));
  for (const std::string& line : splitLines(result.err)) step.remarks.push_back(line);
  expect(step, reply == expectedReply, "the reply to " + typed(command) + " should be " + expectedReply);
}

void Stage::expect(Step& step, bool holds, const std::string& surprise) {
  if (!holds) step.surprises.push_back(surprise);
}

}  // namespace halvo::sim
