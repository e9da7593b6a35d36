#include "client/CommandLine.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "client/NearestWord.h"
#include "client/Options.h"

namespace halvo {
namespace {

struct VerbRow {
  std::string_view name;
  Verb verb;
  std::string_view operand;  // what follows; empty when nothing does
  bool needsOperand;
  bool takesAudioOption;
  bool changesTheMachine;
  bool hasLegacyForm;
};

constexpr std::array<VerbRow, 8> kVerbs = {{
    {"ping", Verb::ping, "", false, false, false, false},
    {"users", Verb::users, "", false, false, false, false},
    {"install", Verb::install, "a package", true, true, true, true},
    {"prepare-removal", Verb::prepareRemoval, "", false, true, true, true},
    {"remove-bundle", Verb::removeBundle, "the path of the application", true, false, true, true},
    {"finalize", Verb::finalize, "", false, false, true, true},
    {"uninstall", Verb::uninstall, "the path of the application", false, true, true, false},
    {"doctor", Verb::doctor, "", false, false, false, false},
}};

struct RegistrationRow {
  std::string_view name;
  Registering what;
};

constexpr std::array<RegistrationRow, 3> kRegistrations = {
    {{"register", Registering::add}, {"unregister", Registering::remove}, {"status", Registering::look}}};

constexpr std::string_view kLegacy = "legacy";

// The names of the rows, and the word before some of them.
constexpr auto kRequestNames = [] {
  std::array<std::string_view, kVerbs.size() + kRegistrations.size() + 1> names;
  auto* next = std::ranges::transform(kVerbs, names.begin(), &VerbRow::name).out;
  std::ranges::transform(kRegistrations, next, &RegistrationRow::name);
  names.back() = kLegacy;
  return names;
}();

const VerbRow* rowNamed(std::string_view name) {
  const auto* found = std::ranges::find(kVerbs, name, &VerbRow::name);
  return found == kVerbs.end() ? nullptr : found;
}

std::string quoted(std::string_view word) { return "'" + std::string(word) + "'"; }

std::string refusalOf(std::string_view request, std::string_view word) {
  return std::string(request) + " does not take " + quoted(word);
}

bool takes(const VerbRow& row, bool legacy, Option option) {
  switch (option) {
    case Option::acceptAudioInterruption:
      return row.takesAudioOption;
    case Option::withoutGrant:
      return row.changesTheMachine && !legacy;
    case Option::withoutChecks:
      return !row.operand.empty() && !legacy;
    case Option::manifest:
      return row.verb == Verb::install;
    case Option::openSettings:
      return false;
    case Option::json:
      return row.verb == Verb::doctor;
    case Option::timeout:
    case Option::help:
    case Option::version:
      return true;
  }
  return false;  // Not reached: there is no other option.
}

std::optional<std::chrono::seconds> secondsIn(std::string_view text) {
  constexpr int kDay = 24 * 60 * 60;
  int seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds < 1 || seconds > kDay) return std::nullopt;
  return std::chrono::seconds(seconds);
}

// The three functions answer what is wrong.
std::optional<std::string> takeOption(const VerbRow& row, const GivenOption& given, CommandLine& line) {
  if (!takes(row, line.legacy, given.option)) return refusalOf(row.name, nameOf(given.option));
  if (given.option == Option::acceptAudioInterruption) line.acceptAudioInterruption = true;
  if (given.option == Option::withoutGrant) line.withoutGrant = true;
  if (given.option == Option::withoutChecks) line.withoutChecks = true;
  if (given.option == Option::json) line.json = true;
  if (given.option == Option::manifest) line.manifestPath = given.value;
  if (given.option != Option::timeout) return std::nullopt;
  line.timeout = secondsIn(given.value);
  if (!line.timeout) return "--timeout needs a whole number of seconds from 1 to 86400";
  return std::nullopt;
}

std::optional<std::string> takeOperands(const VerbRow& row, std::span<const std::string> operands, CommandLine& line) {
  const std::size_t wanted = row.operand.empty() ? 0 : 1;
  if (operands.size() > wanted) return refusalOf(row.name, operands[wanted]);
  if (!operands.empty()) line.path = operands.front();
  return std::nullopt;
}

std::optional<std::string> missingFrom(const VerbRow& row, const CommandLine& line) {
  if (row.needsOperand && line.path.empty()) return std::string(row.name) + " needs " + std::string(row.operand);
  if (row.verb == Verb::install && line.manifestPath.empty()) return "install needs --manifest and a file";
  return std::nullopt;
}

ParsedCommandLine parseRegistration(const RegistrationRow& row, const TypedWords& typed) {
  RegistrationCommand command{.what = row.what};
  for (const GivenOption& given : typed.options) {
    if (given.option != Option::openSettings || row.what != Registering::look) {
      return UsageError{refusalOf(row.name, nameOf(given.option))};
    }
    command.openSettings = true;
  }
  if (typed.operands.size() > 1) return UsageError{refusalOf(row.name, typed.operands[1])};
  return command;
}

ParsedCommandLine parseRequest(const TypedWords& typed) {
  std::span<const std::string> operands = typed.operands;
  CommandLine line;
  line.legacy = operands.front() == kLegacy;
  if (line.legacy) operands = operands.subspan(1);
  if (operands.empty()) return UsageError{"legacy needs a request"};
  const VerbRow* row = rowNamed(operands.front());
  if (row == nullptr) {
    return UsageError{quoted(operands.front()) + " is not a request" + suggestionFor(operands.front(), kRequestNames)};
  }
  if (line.legacy && !row->hasLegacyForm) return UsageError{std::string(row->name) + " has no legacy form"};

  line.verb = row->verb;
  for (const GivenOption& given : typed.options) {
    if (auto problem = takeOption(*row, given, line)) return UsageError{std::move(*problem)};
  }
  if (auto problem = takeOperands(*row, operands.subspan(1), line)) return UsageError{std::move(*problem)};
  if (auto problem = missingFrom(*row, line)) return UsageError{std::move(*problem)};
  return line;
}

}  // namespace

ParsedCommandLine parseCommandLine(const std::vector<std::string>& arguments) {
  const TypedWords typed = takeApart(arguments);
  if (typed.has(Option::help)) return HelpWanted{};
  if (typed.problem) return UsageError{*typed.problem};
  if (typed.has(Option::version)) return VersionWanted{};
  if (typed.operands.empty()) return UsageError{"say what to do"};
  const auto* registration = std::ranges::find(kRegistrations, typed.operands.front(), &RegistrationRow::name);
  if (registration != kRegistrations.end()) return parseRegistration(*registration, typed);
  return parseRequest(typed);
}

std::span<const std::string_view> requestNames() { return kRequestNames; }

std::string_view helpText() {
  return R"(usage: halvo-app REQUEST [OPTION...]

Asks the privileged helper of the Halvo audio product for one thing and prints its reply.

  ping                                   the helper's version
  users                                  the users with a graphical login session
  register                               register the helper with the system
  unregister                             take the registration back; a helper that runs may end
  status                                 how the system regards the registration
  doctor [--json]                        what is installed, what is wrong, and what to do about it
  install PKG --manifest FILE            install a signed system package
  uninstall [PATH]                       remove the system parts, the application and the helper, in this order
  prepare-removal                        remove the product's system parts
  remove-bundle PATH                     remove the application bundle
  finalize                               unregister the helper and stop it
  legacy install|prepare-removal|remove-bundle|finalize ...
                                         the same without authorization, as old applications ask; always refused

  --manifest FILE                        the package's manifest; - is standard input (install)
  --json                                 report for programs (doctor)
  --accept-audio-interruption            go on although audio is running (install, uninstall,
                                         prepare-removal)
  --open-settings                        show where System Settings asks for approval (status)
  --timeout SECONDS                      wait no longer for a reply; what the helper has begun, it finishes
  --without-grant                        send an authorization that was never approved, to see it refused
  --without-checks                       send what this program would refuse itself (install, uninstall,
                                         remove-bundle)
  -h, --help, --version

Options may stand anywhere; what follows -- is none. Requests that change the machine ask an administrator for approval
first. The reply goes to standard output as it came, everything else to standard error. The exit status is 0 when the
request succeeded; halvo-app(1) lists the others.
)";
}

}  // namespace halvo
