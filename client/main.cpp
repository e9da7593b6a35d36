// halvo-app: the application's side of the helper's protocol as a command line program.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "HalvoHelperXPC/Constants.h"
#include "client/InterruptHandling.h"
#include "client/Program.h"
#include "client/StandardStreams.h"
#include "transport/ServiceClient.h"

int main(int argc, char* argv[]) {
  halvo::takeClosedStandardStreams();
  halvo::endWithStatusOnInterrupt();
  const auto connect = [] {
    return halvo::Conversation(
        [] { return halvo::ServiceClient::forMachService(std::string(halvo::kHalvoHelperMachService)); });
  };
  // A caller may leave out even the name of the program.
  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  const halvo::Surroundings surroundings{
      .out = std::cout, .err = std::cerr, .errIsTerminal = ::isatty(STDERR_FILENO) == 1};
  return static_cast<int>(halvo::runProgram(arguments, connect, surroundings));
}
