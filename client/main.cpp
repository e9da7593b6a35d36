// halvo-app: the application's side of the helper's protocol as a command line program.
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include "HalvoHelperXPC/Constants.h"
#include "client/CommandLine.h"
#include "client/Commands.h"
#include "client/Conversation.h"
#include "client/ExitStatus.h"
#include "client/InterruptHandling.h"
#include "client/Message.h"
#include "client/VisibleText.h"
#include "platform/service/ServiceClient.h"

namespace halvo {
namespace {

ExitStatus run(const std::vector<std::string>& arguments) {
  const auto parsed = parseCommandLine(arguments);
  if (const auto* wrong = std::get_if<UsageError>(&parsed)) {
    say(std::cerr, visibleText(wrong->message) + "; see halvo-app --help");
    return ExitStatus::usage;
  }
  if (std::holds_alternative<HelpWanted>(parsed)) {
    std::cout << helpText();
    return ExitStatus::success;
  }
  if (std::holds_alternative<VersionWanted>(parsed)) {
    std::cout << "halvo-app, protocol version " << kHalvoHelperXPCVersion << "\n";
    return ExitStatus::success;
  }
  Conversation conversation(ServiceClient::forMachService(std::string(kHalvoHelperMachService)));
  return runCommand(std::get<CommandLine>(parsed), conversation, {std::cout, std::cerr});
}

}  // namespace
}  // namespace halvo

int main(int argc, char* argv[]) {
  halvo::endWithStatusOnInterrupt();
  return static_cast<int>(halvo::run(std::vector<std::string>(argv + 1, argv + argc)));
}
