// Runs one tool as the helper would, in a process whose state whoever starts it has chosen, and writes into a file what
// the runner answered: the code, a line feed, the output.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "HalvoHelper/system/InheritedState.h"
#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/system/UniqueDescriptor.h"

namespace {

// Starts this program anew with SIGCHLD ignored, and without the word that asked for it.
int restartIgnoringChildren(char* argv[]) {
  std::signal(SIGCHLD, SIG_IGN);
  argv[1] = argv[0];
  ::execv(argv[0], argv + 1);
  return EXIT_FAILURE;
}

bool canWriteTo(int descriptor) { return ::write(descriptor, "x", 1) == 1; }

}  // namespace

// Usage: halvo_runner_probe [ignoring-children] as-is|start REPORT HELD [TOOL ARGUMENT...]
// Keeps the file HELD open for reading meanwhile, as the helper keeps files and connections. Without a tool it reports
// the number of that descriptor, and whether both standard streams can be written to.
int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 3) return EXIT_FAILURE;
  if (words[0] == "ignoring-children") return restartIgnoringChildren(argv);
  if (words[0] == "start") halvo::halvoPutInheritedStateInOrder();
  const halvo::UniqueDescriptor held(::open(words[2].c_str(), O_RDONLY | O_CLOEXEC));
  std::ofstream report;
  if (words.size() == 3) {
    report.open(words[1]);
    report << held.get() << (canWriteTo(STDOUT_FILENO) && canWriteTo(STDERR_FILENO) ? " writable" : " not writable");
  } else {
    const auto result = halvo::RealProcessRunner().run(words[3], {words.begin() + 4, words.end()});
    report.open(words[1]);
    report << result.code << '\n' << result.output;
  }
  return EXIT_SUCCESS;
}
