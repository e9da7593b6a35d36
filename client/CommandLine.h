// What a person typed after "halvo-app".
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace halvo {

enum class Verb { ping, users, install, prepareRemoval, removeBundle, finalize };

struct CommandLine {
  Verb verb = Verb::ping;
  bool legacy = false;        // use the first generation of the protocol, which carries no authorization
  bool withoutGrant = false;  // send an authorization that never obtained the right
  bool acceptAudioInterruption = false;
  std::string path = {};          // of the package or the bundle, as typed
  std::string manifestPath = {};  // for an install

  bool operator==(const CommandLine&) const = default;
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

[[nodiscard]] std::variant<CommandLine, HelpWanted, VersionWanted, UsageError> parseCommandLine(
    const std::vector<std::string>& arguments);

// The text of --help.
[[nodiscard]] std::string_view helpText();

}  // namespace halvo
