#include "sim/machine/Commands.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>
#include <variant>

#include "sim/machine/Entry.h"
#include "sim/machine/HostProcess.h"
#include "sim/machine/Machine.h"
#include "sim/support/CodeSignature.h"
#include "sim/support/TemporaryDirectory.h"
#include "sim/tools/PackageCommand.h"

namespace halvo::sim {
namespace {

using Words = std::vector<std::string>;

constexpr int kFailed = 1;
constexpr int kUsage = 64;

constexpr const char* kHelp =
    "halvo-sim: a simulated Mac in a folder\n"
    "\n"
    "  halvo-sim new DIR                        builds a fresh machine\n"
    "  halvo-sim run DIR [--user UID] -- CMD... starts it, runs CMD in it as that user (0 if not said), passes the "
    "exit\n"
    "                                           status on, and ends everything inside\n"
    "  halvo-sim app DIR                        puts Halvo.app back, with its helper registered\n"
    "  halvo-sim package OUT.pkg --version V --report FILE [--postinstall FILE] [--truncate-payload BYTES]\n"
    "                                           builds an installer package with that signature report\n"
    "  halvo-sim sign FILE --identifier I --team T [--anchor A]\n"
    "                                           signs a program; A is \"apple generic\" if not said\n"
    "  halvo-sim check                          says whether this host can run the machine, and why not\n"
    "  halvo-sim --help                         shows this\n";

int usage(const CommandStreams& streams, const std::string& why) {
  streams.err << "halvo-sim: " << why << " `halvo-sim --help` shows the commands.\n";
  return kUsage;
}

int fail(const CommandStreams& streams, const std::string& why) {
  streams.err << "halvo-sim: " << why << "\n";
  return kFailed;
}

int report(const CommandStreams& streams, const std::optional<MachineProblem>& problem) {
  return problem ? fail(streams, problem->text) : 0;
}

std::optional<std::filesystem::path> machineAt(const std::string& word) {
  std::error_code error;
  const auto path = std::filesystem::canonical(word, error);
  return !error && isMachine(path) ? std::optional(path) : std::nullopt;
}

int noMachine(const CommandStreams& streams, const std::string& word) {
  return fail(streams, word + " is not a machine; make one with `halvo-sim new " + word + "`.");
}

int newCommand(const Words& words, const CommandStreams& streams) {
  if (words.size() != 1 || words[0].empty()) return usage(streams, "`new` takes one folder.");
  return report(streams, buildMachine(std::filesystem::absolute(words[0])));
}

int appCommand(const Words& words, const CommandStreams& streams) {
  if (words.size() != 1) return usage(streams, "`app` takes the folder of a machine.");
  const auto root = machineAt(words[0]);
  if (!root) return noMachine(streams, words[0]);
  return report(streams, putApplicationBack(*root));
}

struct RunOrder {
  std::string machine;
  std::string user = "0";
  Words command;
};

bool isUid(const std::string& text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

// DIR [--user UID] -- CMD...
std::optional<RunOrder> parseRun(const Words& words) {
  const auto separator = std::ranges::find(words, "--");
  const Words options(words.begin(), separator);
  if (separator == words.end() || separator + 1 == words.end() || options.empty()) return std::nullopt;
  RunOrder order{.machine = options[0], .user = "0", .command = Words(separator + 1, words.end())};
  if (options.size() == 1) return order;
  if (options.size() != 3 || options[1] != "--user" || !isUid(options[2])) return std::nullopt;
  order.user = options[2];
  return order;
}

std::optional<EntryWay> firstWay(const std::filesystem::path& root, const CommandStreams& streams) {
  std::string refusals;
  for (const EntryWay way : kEntryWays) {
    const auto result = tryEntry(way, root);
    if (std::holds_alternative<EntryPossible>(result)) return way;
    refusals += "  " + describe(way) + ": " + std::get<EntryImpossible>(result).reason + "\n";
  }
  fail(streams, "this host cannot run the machine. " + entryAdvice());
  streams.err << refusals;
  return std::nullopt;
}

int runCommand(const Words& words, const CommandStreams& streams) {
  const auto order = parseRun(words);
  if (!order) return usage(streams, "`run` takes a folder, perhaps `--user UID`, then `--` and a command.");
  const auto root = machineAt(order->machine);
  if (!root) return noMachine(streams, order->machine);
  const auto way = firstWay(*root, streams);
  if (!way) return kFailed;
  Words session = {"/sbin/launchd", "--session", "--user", order->user, "--"};
  session.insert(session.end(), order->command.begin(), order->command.end());
  return runInPlace(entryCommand(*way, *root, session));
}

int checkCommand(const Words& words, const CommandStreams& streams) {
  if (!words.empty()) return usage(streams, "`check` takes nothing.");
  const TemporaryDirectory scratch;
  const auto root = scratch.path() / "mac";
  if (const auto problem = buildMachine(root)) return fail(streams, problem->text);
  bool possible = false;
  for (const EntryWay way : kEntryWays) {
    const auto result = tryEntry(way, root);
    const auto* refusal = std::get_if<EntryImpossible>(&result);
    streams.out << describe(way) << ": " << (refusal == nullptr ? "works" : "does not work: " + refusal->reason)
                << "\n";
    possible = possible || refusal == nullptr;
  }
  return possible ? 0 : fail(streams, "this host cannot run the machine. " + entryAdvice());
}

int signCommand(const Words& words, const CommandStreams& streams) {
  std::map<std::string, std::string> options = {{"--identifier", ""}, {"--team", ""}, {"--anchor", "apple generic"}};
  bool understood = words.size() % 2 == 1;
  for (std::size_t i = 1; understood && i + 1 < words.size(); i += 2) {
    understood = options.contains(words[i]);
    if (understood) options[words[i]] = words[i + 1];
  }
  if (!understood || options["--identifier"].empty() || options["--team"].empty()) {
    return usage(streams, "`sign` takes a file, `--identifier I`, `--team T` and perhaps `--anchor A`.");
  }
  const CodeSignature signature{
      .identifier = options["--identifier"], .teamIdentifier = options["--team"], .anchor = options["--anchor"]};
  if (signExecutable(words[0], signature)) return 0;
  return fail(streams, words[0] + " cannot be signed; name a program that exists, is writable and does not run.");
}

}  // namespace

int halvoSim(const Words& words, const CommandStreams& streams) {
  if (words.empty()) return usage(streams, "a command is missing.");
  const Words rest(words.begin() + 1, words.end());
  if (words[0] == "new") return newCommand(rest, streams);
  if (words[0] == "run") return runCommand(rest, streams);
  if (words[0] == "app") return appCommand(rest, streams);
  if (words[0] == "package") return packageCommand(rest);
  if (words[0] == "sign") return signCommand(rest, streams);
  if (words[0] == "check") return checkCommand(rest, streams);
  if (words[0] == "--help" && rest.empty()) {
    streams.out << kHelp;
    return 0;
  }
  return usage(streams, "there is no command `" + words[0] + "`.");
}

}  // namespace halvo::sim
