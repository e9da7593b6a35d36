#include "sim/support/Processes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>

#include "sim/support/Files.h"
#include "sim/support/WaitUntil.h"

namespace halvo::sim {
namespace {

// True when no child is left.
bool collect() {
  while (true) {
    const pid_t child = ::waitpid(-1, nullptr, WNOHANG);
    if (child < 0 && errno == ECHILD) return true;
    if (child <= 0) return false;
  }
}

void killChildren() {
  for (const pid_t process : processNumbers().value_or(std::vector<pid_t>())) {
    const auto facts = processFacts(process);
    if (facts && facts->parent == ::getpid()) ::kill(process, SIGKILL);
  }
}

}  // namespace

std::optional<ProcessFacts> processFacts(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  const std::string text = wholeFile("/proc/" + std::to_string(pid) + "/stat");
  // The program's name stands in parentheses and may itself hold blanks and parentheses: count from the last one.
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;
  std::istringstream fields(text.substr(nameEnd + 1));
  ProcessFacts facts;
  fields >> facts.state >> facts.parent;
  std::string unused;
  constexpr int kFieldsBetween = 17;
  for (int i = 0; i < kFieldsBetween; ++i) fields >> unused;
  if (!(fields >> facts.startTime)) return std::nullopt;
  return facts;
}

std::optional<std::uint32_t> processVersion(pid_t pid) {
  const auto facts = processFacts(pid);
  return facts ? std::optional(static_cast<std::uint32_t>(facts->startTime)) : std::nullopt;
}

std::optional<std::vector<pid_t>> processNumbers() {
  std::vector<pid_t> numbers;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename();
    pid_t number = 0;  // which is no process: what is no number stays so
    std::from_chars(name.data(), name.data() + name.size(), number);
    if (number > 0) numbers.push_back(number);
  }
  return error ? std::nullopt : std::optional(std::move(numbers));
}

void endDescendants() {
  constexpr std::chrono::seconds kPatience(5);
  waitUntil(
      [] {
        if (collect()) return true;
        killChildren();
        return false;
      },
      kPatience);
}

}  // namespace halvo::sim
