// halvo-demo: walks through the product's life in a simulated Mac and compares every step with what is expected.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "sim/demo/Stage.h"
#include "sim/demo/Steps.h"

namespace {

constexpr int kUsageError = 64;

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

int main(int argc, char* /*argv*/[]) {
  constexpr int kMachineUnavailable = 70;
  if (argc > 1) {
    std::cerr << "demo: takes no arguments; see ./demo --help\n";
    return kUsageError;
  }
  try {
    return walk() ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::cerr << "demo: " << error.what() << "\n";
    return kMachineUnavailable;
  }
}
