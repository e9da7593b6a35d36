// halvo-demo: walks through the product's life in a simulated Mac and compares every step with what is expected.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include "sim/demo/Stage.h"
#include "sim/demo/Steps.h"

namespace {

constexpr int kUsageError = 64;

constexpr std::string_view kUsage =
    "usage: ./demo\n\n"
    "Boots a simulated Mac and walks through the life of the product: start on demand, installs, refusals, a "
    "rollback.\n"
    "Each step shows the request, the reply, the tools that ran and what changed on disk. Exit status 0 when every "
    "step\n"
    "went as expected, 1 when one did not, 70 when the simulated Mac itself cannot run.\n";

bool walk() {
  using namespace halvo::sim;
  StepReport report(std::cout);
  Stage stage(report);
  walkFirstContact(stage);
  walkInstalls(stage);
  walkRefusedPackages(stage);
  walkAudio(stage);
  walkRollback(stage);
  walkStrangersAndIdleness(stage);
  walkUninstall(stage);
  const std::string runningApplication = keepApplicationRunning(stage);
  walkBundleRemoval(stage);
  walkFinalRemoval(stage, runningApplication);
  walkReinstall(stage);
  return report.conclude();
}

}  // namespace

int main(int argc, char* argv[]) {
  constexpr int kMachineUnavailable = 70;
  if (argc > 1) {
    const bool help = std::string_view(argv[1]) == "--help";
    (help ? std::cout : std::cerr) << kUsage;
    return help ? EXIT_SUCCESS : kUsageError;
  }
  try {
    return walk() ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << "demo: " << error.what() << "\n";
    return kMachineUnavailable;
  }
}
