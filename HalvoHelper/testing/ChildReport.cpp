// A child process that tells about itself: what it was given by whoever started it. Standard output is its report.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Words = std::vector<std::string>;

constexpr int kHighestDescriptor = 1024;
constexpr int kHighestSignal = 31;

// Each argument in brackets, so that blanks and line feeds show.
void arguments(const Words& words) {
  for (const std::string& word : words) std::cout << '[' << word << ']';
}

void descriptors(const Words&) {
  for (int descriptor = 0; descriptor < kHighestDescriptor; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) std::cout << descriptor << ' ';
  }
}

void processGroup(const Words&) { std::cout << (::getpgrp() == ::getpid() ? "own" : "inherited"); }

void blockedSignals(const Words&) {
  sigset_t mask{};
  ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  for (int signal = 1; signal <= kHighestSignal; ++signal) {
    if (sigismember(&mask, signal) == 1) std::cout << signal << ' ';
  }
}

void ignoredSignals(const Words&) {
  for (int signal = 1; signal <= kHighestSignal; ++signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) std::cout << signal << ' ';
  }
}

// As many letters as the first word says, half of them on each stream.
void flood(const Words& words) {
  const std::string half(std::stoul(words.at(0)) / 2, 'x');
  std::cout << half << std::flush;
  std::cerr << half;
}

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string> all(argv, argv + argc);
  const std::map<std::string_view, std::function<void(const Words&)>> reports = {
      {"arguments", arguments},
      {"descriptors", descriptors},
      {"process-group", processGroup},
      {"blocked-signals", blockedSignals},
      {"ignored-signals", ignoredSignals},
      {"flood", flood},
  };
  if (all.size() < 2) {
    std::cout << "no arguments: " << all.at(0);
    return EXIT_SUCCESS;
  }
  const auto report = reports.find(all[1]);
  if (report == reports.end()) {
    std::cerr << "no report is called " << all[1] << '\n';
    return EXIT_FAILURE;
  }
  report->second({all.begin() + 2, all.end()});
  return EXIT_SUCCESS;
}
