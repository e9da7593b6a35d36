#include "client/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace halvo {
namespace {

struct VerbRow {
  std::string_view name;
  Verb verb;
  std::string_view operand;  // what has to follow; empty when nothing does
  bool takesAudioOption;
  bool changesTheMachine;
};

constexpr std::array<VerbRow, 6> kVerbs = {{
    {"ping", Verb::ping, "", false, false},
    {"users", Verb::users, "", false, false},
    {"install", Verb::install, "a package", true, true},
    {"prepare-removal", Verb::prepareRemoval, "", true, true},
    {"remove-bundle", Verb::removeBundle, "the path of the application", false, true},
    {"finalize", Verb::finalize, "", false, true},
}};

const VerbRow* rowNamed(std::string_view name) {
  const auto* found = std::ranges::find(kVerbs, name, &VerbRow::name);
  return found == kVerbs.end() ? nullptr : found;
}

std::string quoted(std::string_view word) { return "'" + std::string(word) + "'"; }

// Takes the words behind the verb; answers what is wrong with them.
std::optional<std::string> takeWords(const VerbRow& row, const std::vector<std::string>& words, CommandLine& line) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--accept-audio-interruption" && row.takesAudioOption) {
      line.acceptAudioInterruption = true;
    } else if (word == "--without-grant" && row.changesTheMachine && !line.legacy) {
      line.withoutGrant = true;
    } else if (word == "--manifest" && row.verb == Verb::install) {
      if (++i == words.size()) return "--manifest needs the path of a file";
      line.manifestPath = words[i];
    } else if (word.starts_with("--") || row.operand.empty() || !line.path.empty()) {
      return std::string(row.name) + " does not take " + quoted(word);
    } else {
      line.path = word;
    }
  }
  return std::nullopt;
}

std::optional<std::string> missingFrom(const VerbRow& row, const CommandLine& line) {
  if (!row.operand.empty() && line.path.empty()) return std::string(row.name) + " needs " + std::string(row.operand);
  if (row.verb == Verb::install && line.manifestPath.empty()) return "install needs --manifest and a file";
  return std::nullopt;
}

}  // namespace

std::variant<CommandLine, HelpWanted, VersionWanted, UsageError> parseCommandLine(
    const std::vector<std::string>& arguments) {
  std::vector<std::string> words = arguments;
  if (std::ranges::find(words, "--help") != words.end()) return HelpWanted{};
  if (words.empty()) return UsageError{"say what to do"};
  if (words.front() == "--version") return VersionWanted{};

  CommandLine line;
  line.legacy = words.front() == "legacy";
  if (line.legacy) words.erase(words.begin());
  const VerbRow* row = words.empty() ? nullptr : rowNamed(words.front());
  if (row == nullptr) {
    return UsageError{words.empty() ? "legacy needs a request" : quoted(words.front()) + " is not a request"};
  }
  if (line.legacy && !row->changesTheMachine) return UsageError{std::string(row->name) + " has no legacy form"};

  line.verb = row->verb;
  words.erase(words.begin());
  if (auto problem = takeWords(*row, words, line)) return UsageError{std::move(*problem)};
  if (auto problem = missingFrom(*row, line)) return UsageError{std::move(*problem)};
  return line;
}

std::string_view helpText() {
  return R"(usage: halvo-app REQUEST

Asks the privileged helper of the Halvo audio product for one thing and prints its reply.

  ping                                   the helper's version
  users                                  the users with a graphical login session
  install PKG --manifest FILE            install a signed system package
  prepare-removal                        remove the product's system parts
  remove-bundle PATH                     remove the application bundle
  finalize                               unregister the helper and stop it
  legacy install|prepare-removal|remove-bundle|finalize ...
                                         the same without authorization, as old applications ask; always refused

  --accept-audio-interruption            go on although audio is running (install, prepare-removal)
  --without-grant                        send an authorization that was never approved, to see it refused
  --help, --version

Requests that change the machine ask an administrator for approval first. The reply goes to standard output as it came,
everything else to standard error.

Exit status:
   0  the request succeeded
   1  the helper refused the request or could not complete it
   2  an administrator's approval is missing
   3  the helper cannot be reached, or does not take this program for the application
   4  the helper ended before it replied
   5  the installed helper is too old for this request
  64  wrong usage
  66  the manifest cannot be read
  74  the request succeeded, but its reply could not be written
 130  interrupted; what the helper has begun, it finishes
)";
}

}  // namespace halvo
