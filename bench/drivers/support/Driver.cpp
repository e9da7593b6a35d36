#include "bench/drivers/support/Driver.h"

#include <sys/resource.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace halvo::bench {
namespace {

Words wordsOf(const std::string& line) {
  std::istringstream in(line);
  Words words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

std::string carryOut(const std::map<std::string, Verb>& verbs, const Words& words) {
  const auto verb = words.empty() ? verbs.end() : verbs.find(words.front());
  require(verb != verbs.end(), "there is no verb '" + (words.empty() ? "" : words.front()) + "'");
  return verb->second(Words(words.begin() + 1, words.end()));
}

// Where there is /proc, getrusage(2) counts what the process held before its exec, its parent's memory, too.
std::string peak(const Words& /*words*/) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::to_string(std::stol(line.substr(line.find(':') + 1)));
  }
  constexpr long kBytesEach = 1024;
  struct rusage usage {};
  ::getrusage(RUSAGE_SELF, &usage);
  return std::to_string(usage.ru_maxrss / kBytesEach);
}

void serve(const std::map<std::string, Verb>& verbs) {
  for (std::string line; std::getline(std::cin, line);) std::cout << carryOut(verbs, wordsOf(line)) << std::endl;
}

}  // namespace

int drive(std::map<std::string, Verb> verbs, int argc, char* argv[]) try {
  verbs.emplace("peak", peak);
  const Words words(argv + std::min(argc, 1), argv + argc);
  if (words.empty()) {
    serve(verbs);
  } else {
    std::cout << carryOut(verbs, words) << '\n';
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << argv[0] << ": " << error.what() << '\n';
  return 1;
}

Verb timed(const Work& work, const Work& prepare) {
  return [=](const Words& words) {
    const Words rest(words.begin() + 1, words.end());
    std::int64_t total = 0;
    for (int left = std::stoi(words.at(0)); left > 0; --left) {
      prepare(rest);
      total += nanosecondsOf([&] { work(rest); });
    }
    return std::to_string(total);
  };
}

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

}  // namespace halvo::bench
