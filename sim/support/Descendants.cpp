#include "sim/support/Descendants.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>
#include <vector>

#include "sim/support/ProcessIdentity.h"

namespace halvo::sim {
namespace {

constexpr std::chrono::seconds kPatience(5);
constexpr std::chrono::milliseconds kPause(2);

std::vector<pid_t> children() {
  std::vector<pid_t> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    // What is no number reads as 0, which is no process.
    const auto process = static_cast<pid_t>(std::strtol(entry.path().filename().c_str(), nullptr, 10));
    const auto facts = processFacts(process);
    if (facts && facts->parent == ::getpid()) found.push_back(process);
  }
  return found;
}

// True when no child is left.
bool collect() {
  while (true) {
    const pid_t child = ::waitpid(-1, nullptr, WNOHANG);
    if (child < 0 && errno == ECHILD) return true;
    if (child <= 0) return false;
  }
}

}  // namespace

void endDescendants() {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!collect() && std::chrono::steady_clock::now() < end) {
    for (const pid_t child : children()) ::kill(child, SIGKILL);
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace halvo::sim
