#include "client/Program.h"

#include <variant>

#include "HalvoHelperXPC/Constants.h"
#include "HalvoHelperXPC/Version.h"
#include "client/CommandLine.h"
#include "client/Message.h"
#include "client/VisibleText.h"

namespace halvo {
namespace {

ExitStatus carryOut(const std::vector<std::string>& arguments, const std::function<Conversation()>& connect,
                    const Surroundings& surroundings) {
  const auto parsed = parseCommandLine(arguments);
  if (const auto* wrong = std::get_if<UsageError>(&parsed)) {
    say(surroundings.err, visibleText(wrong->message) + "; see halvo-app --help");
    return ExitStatus::usage;
  }
  if (std::holds_alternative<HelpWanted>(parsed)) {
    surroundings.out << helpText();
    return ExitStatus::success;
  }
  if (std::holds_alternative<VersionWanted>(parsed)) {
    surroundings.out << "halvo-app " << kHalvoVersion << ", protocol version " << kHalvoHelperXPCVersion << "\n";
    return ExitStatus::success;
  }
  if (const auto* registration = std::get_if<RegistrationCommand>(&parsed)) {
    const RegistrationReport report = carryOutRegistration(*registration, surroundings.registration);
    surroundings.out << report.word << '\n' << std::flush;
    say(surroundings.err, report.explanation.text);
    return report.explanation.status;
  }
  Conversation conversation = connect();
  return runCommand(std::get<CommandLine>(parsed), conversation, surroundings);
}

}  // namespace

ExitStatus runProgram(const std::vector<std::string>& arguments, const std::function<Conversation()>& connect,
                      const Surroundings& surroundings) {
  const ExitStatus status = carryOut(arguments, connect, surroundings);
  // A full disk shows when the last of the text leaves the stream.
  if (surroundings.out.flush()) return status;
  say(surroundings.err, "Standard output could not be written to the end.");
  return status == ExitStatus::success ? ExitStatus::unwritableOutput : status;
}

}  // namespace halvo
