// launchctl and killall of the simulated machine: one program that acts by the name it is called by.
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "sim/launchd/ControlClient.h"
#include "sim/launchd/LaunchctlCommand.h"
#include "sim/tools/ToolRun.h"

namespace {

constexpr int kUsage = 64;

}  // namespace

int main(int argc, char** argv) {
  using namespace halvo::sim;
  const std::string name = std::filesystem::path(argc > 0 ? argv[0] : "").filename().string();
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const ToolStreams streams{.out = std::cout, .err = std::cerr};
  if (name == "launchctl") {
    return runTool("/bin/launchctl", arguments, streams,
                   [&] { return launchctlCommand(ControlClient(), arguments, std::cout, std::cerr); });
  }
  if (name == "killall") {
    return runTool("/usr/bin/killall", arguments, streams,
                   [&] { return killallCommand(ControlClient(), arguments, std::cerr); });
  }
  std::cerr << "This program acts as launchctl or killall: call it by one of these names.\n";
  return kUsage;
}
