#include "sim/launchd/StrayProcesses.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace halvo::sim {
namespace {

constexpr std::chrono::seconds kPatience(5);
constexpr std::chrono::milliseconds kPause(2);

std::optional<pid_t> parentOf(const std::string& process) {
  std::ifstream file("/proc/" + process + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  // The name in parentheses may hold blanks and parentheses itself; what counts stands behind the last one.
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;
  std::istringstream rest(text.substr(nameEnd + 1));
  std::string state;
  pid_t parent = 0;
  if (!(rest >> state >> parent)) return std::nullopt;
  return parent;
}

std::vector<pid_t> children() {
  std::vector<pid_t> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename().string();
    pid_t process = 0;
    const auto [end, problem] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (problem != std::errc() || end != name.data() + name.size()) continue;
    if (parentOf(name) == ::getpid()) found.push_back(process);
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

void endStrayProcesses() {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!collect() && std::chrono::steady_clock::now() < end) {
    for (const pid_t child : children()) ::kill(child, SIGKILL);
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace halvo::sim
