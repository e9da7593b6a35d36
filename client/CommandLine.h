// What a person typed after "halvo-app".
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace halvo {

enum class Verb { ping, users, install, prepareRemoval, removeBundle, finalize, uninstall, doctor };

struct CommandLine {
  Verb verb = Verb::ping;
  bool legacy = false;         // use the first generation of the protocol, which carries no authorization
  bool withoutGrant = false;   // send an authorization that never obtained the right
  bool withoutChecks = false;  // send what this program would refuse itself
  bool acceptAudioInterruption = false;
  bool json = false;              // report for programs
  std::string path = {};          // of the package or the bundle, as typed; may be empty for an uninstall
  std::string manifestPath = {};  // for an install; "-" is standard input
  std::optional<std::chrono::seconds> timeout = {};  // how long to wait for each reply; without it, until it comes

  bool operator==(const CommandLine&) const = default;
};

// What is to become of the helper's registration with the system. The helper is not asked.
enum class Registering { add, remove, look };

struct RegistrationCommand {
  Registering what = Registering::look;
  bool openSettings = false;  // show the page of System Settings where it is approved

  bool operator==(const RegistrationCommand&) const = default;
};

struct HelpWanted {
  bool operator==(const HelpWanted&) const = default;
};
struct VersionWanted {
  bool operator==(const VersionWanted&) const = default;
};
// What is wrong, in one sentence.
struct UsageError {
  std::string message;
  bool operator==(const UsageError&) const = default;
};

using ParsedCommandLine = std::variant<CommandLine, RegistrationCommand, HelpWanted, VersionWanted, UsageError>;

// Help is given wherever it is asked for, whatever else is wrong.
[[nodiscard]] ParsedCommandLine parseCommandLine(const std::vector<std::string>& arguments);

// The requests, and "legacy", which stands before some of them.
[[nodiscard]] std::span<const std::string_view> requestNames();

// The text of --help.
[[nodiscard]] std::string_view helpText();

}  // namespace halvo
