#include "sim/machine/Commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <optional>
#include <system_error>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/machine/MachineEntry.h"
#include "sim/machine/MachineRoot.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/CodeSignature.h"
#include "sim/tools/ProductPackage.h"

namespace halvo::sim {
namespace {

using Words = std::vector<std::string>;

constexpr int kFailed = 1;
constexpr int kUsage = 64;

int fail(const ToolStreams& streams, const std::string& why) {
  streams.err << "halvo-sim: " << why << "\n";
  return kFailed;
}

int report(const ToolStreams& streams, const std::optional<MachineProblem>& problem) {
  return problem ? fail(streams, problem->text) : 0;
}

std::optional<std::filesystem::path> machineAt(const std::string& word) {
  std::error_code error;
  const auto path = std::filesystem::canonical(word, error);
  return !error && isMachine(path) ? std::optional(path) : std::nullopt;
}

int noMachine(const ToolStreams& streams, const std::string& word) {
  return fail(streams, word + " is not a machine; make one with `halvo-sim new " + word + "`.");
}

int newCommand(const std::string& folder, const ToolStreams& streams) {
  return report(streams, buildMachine(std::filesystem::absolute(folder)));
}

int appCommand(const std::string& folder, const ToolStreams& streams) {
  const auto root = machineAt(folder);
  return root ? report(streams, putApplicationBack(*root)) : noMachine(streams, folder);
}

std::optional<EntryWay> firstWay(const std::filesystem::path& root, const ToolStreams& streams) {
  std::string refusals;
  for (const EntryWay way : kEntryWays) {
    const auto obstacle = obstacleOf(way, root);
    if (!obstacle) return way;
    refusals += "  " + describe(way) + ": " + *obstacle + "\n";
  }
  fail(streams, "this host cannot run the machine. " + entryAdvice());
  streams.err << refusals;
  return std::nullopt;
}

int runCommand(const std::string& folder, unsigned user, const Words& command, const ToolStreams& streams) {
  const auto root = machineAt(folder);
  if (!root) return noMachine(streams, folder);
  const auto way = firstWay(*root, streams);
  if (!way) return kFailed;
  Words session = {"/sbin/launchd", "--session", "/", std::to_string(user)};
  session.insert(session.end(), command.begin(), command.end());
  // A Control-C of the terminal reaches the command and launchd, which see to the end; nothing between may die of it.
  auto* const before = std::signal(SIGINT, SIG_IGN);
  const auto child = startChild(entryCommand(*way, *root, session), {});
  const int status = child ? collectChild(*child) : kProgramMissing;
  std::signal(SIGINT, before);
  return status;
}

int checkCommand(const ToolStreams& streams) {
  const TemporaryDirectory scratch;
  const auto root = scratch.path() / "mac";
  if (const auto problem = buildMachine(root)) return fail(streams, problem->text);
  bool possible = false;
  for (const EntryWay way : kEntryWays) {
    const auto obstacle = obstacleOf(way, root);
    streams.out << describe(way) << ": " << (obstacle ? "does not work: " + *obstacle : "works") << "\n";
    possible = possible || !obstacle;
  }
  return possible ? 0 : fail(streams, "this host cannot run the machine. " + entryAdvice());
}

int signCommand(const std::string& file, const CodeSignature& signature, const ToolStreams& streams) {
  if (signExecutable(file, signature)) return 0;
  return fail(streams, file + " cannot be signed; name a program that exists, is writable and does not run.");
}

int packageCommand(const PackageOrder& order, const ToolStreams& streams) try {
  buildPackage(order);
  return 0;
} catch (const PackageProblem& problem) {
  fail(streams, problem.what());
  return problem.status;
}

std::string notEmpty(const std::string& word) { return word.empty() ? "is empty" : ""; }

// The commands with their options, and which of them was asked for.
struct CommandLine {
  CLI::App app{"A simulated Mac in a folder", "halvo-sim"};
  std::string folder;
  unsigned user = 0;
  std::string file;
  CodeSignature signature{.identifier = {}, .teamIdentifier = {}, .anchor = "apple generic"};
  PackageOrder package;
  Words inside;  // what stands behind "--"
  std::function<int()> act;

  explicit CommandLine(const ToolStreams& streams) {
    app.require_subcommand(1);
    add("new", "Builds a fresh machine", [this, &streams] { return newCommand(folder, streams); })
        ->add_option("DIR", folder, "A folder that does not exist yet or is empty")
        ->required()
        ->check(notEmpty);
    add("app", "Puts Halvo.app back, with its helper registered",
        [this, &streams] { return appCommand(folder, streams); })
        ->add_option("DIR", folder, "The folder of a machine")
        ->required();
    add("check", "Says whether this host can run the machine, and why not",
        [&streams] { return checkCommand(streams); });
    addRun(streams);
    addSign(streams);
    addPackage(streams);
  }

 private:
  CLI::App* add(const char* name, const char* text, std::function<int()> run) {
    CLI::App* command = app.add_subcommand(name, text);
    command->callback([this, run = std::move(run)] { act = run; });
    return command;
  }

  void addRun(const ToolStreams& streams) {
    CLI::App* run =
        add("run", "Starts a machine, runs a command in it, passes its exit status on, and ends everything inside",
            [this, &streams] { return runCommand(folder, user, inside, streams); });
    run->add_option("DIR", folder, "The folder of a machine")->required();
    run->add_option("--user", user, "The uid to run the command as; 0 if not said");
    run->footer("Behind these stands -- and then the command with its arguments.");
  }

  void addSign(const ToolStreams& streams) {
    CLI::App* sign = add("sign", "Signs a program", [this, &streams] { return signCommand(file, signature, streams); });
    sign->add_option("FILE", file, "The program")->required();
    sign->add_option("--identifier", signature.identifier, "For example com.halvo.app")->required();
    sign->add_option("--team", signature.teamIdentifier, "The team of the developer")->required();
    sign->add_option("--anchor", signature.anchor, "Whom the chain ends with; \"apple generic\" if not said");
  }

  void addPackage(const ToolStreams& streams) {
    CLI::App* make =
        add("package", "Builds an installer package", [this, &streams] { return packageCommand(package, streams); });
    make->add_option("OUT", package.package, "The package file to be made")->required();
    make->add_option("--version", package.version, "Of the driver")->required()->check(notEmpty);
    make->add_option("--report", package.report, "The file with its signature report")->required();
    make->add_option("--postinstall", package.postinstall, "A script that runs after the payload is in place");
    make->add_option("--truncate-payload", package.payloadBytes,
                     "How many bytes of the payload are in it: installing it fails half way");
  }
};

}  // namespace

int halvoSim(const Words& words, const ToolStreams& streams) {
  const auto separator = std::ranges::find(words, "--");
  // The parser takes them from the end.
  Words own(std::make_reverse_iterator(separator), words.rend());
  CommandLine line(streams);
  try {
    line.app.parse(own);
  } catch (const CLI::ParseError& answer) {
    return line.app.exit(answer, streams.out, streams.err) == 0 ? 0 : kUsage;
  }
  if (separator != words.end()) line.inside.assign(separator + 1, words.end());
  if (line.inside.empty() == line.app.got_subcommand("run")) {
    streams.err << "halvo-sim: `run`, and nothing else, takes `--` and a command.\n";
    return kUsage;
  }
  return line.act();
}

}  // namespace halvo::sim
