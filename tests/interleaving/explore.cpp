// Explores longer than the tests do and prints what was covered: tests/explore runs it.
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "tests/interleaving/Requests.h"

namespace halvo::interleaving {
namespace {

struct Options {
  std::size_t requests = 3;
  std::optional<int> bound;
};

std::string described(const std::vector<Request>& requests) {
  std::string text;
  for (const Request request : requests) text += (text.empty() ? "" : " + ") + std::string(name(request));
  return text;
}

// Whether nothing went wrong.
bool explored(const std::vector<Request>& requests, const Options& options) {
  const auto begin = std::chrono::steady_clock::now();
  const Exploration result = Explorer(wired(requests), options.bound).run();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  std::cout << described(requests) << ": " << result.schedules << " schedules, " << result.states << " states, "
            << result.executions << " executions, " << taken.count() << " s\n";
  if (!result.violation) return true;
  std::cout << "  VIOLATION: " << *result.violation << "\n";
  for (const std::string& line : result.story) std::cout << "    " << line << "\n";
  return false;
}

std::optional<int> number(const std::string& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

std::optional<Options> parsed(const std::vector<std::string>& words) {
  Options options;
  if (words.size() % 2 != 0) return std::nullopt;
  for (std::size_t at = 0; at < words.size(); at += 2) {
    const auto value = number(words[at + 1]);
    if (!value) return std::nullopt;
    if (words[at] == "--bound") {
      options.bound = value;
    } else if (words[at] == "--requests" && *value > 0) {
      options.requests = static_cast<std::size_t>(*value);
    } else {
      return std::nullopt;
    }
  }
  return options;
}

int explore(const Options& options) {
  std::size_t violations = 0;
  const auto all = combinations(options.requests);
  for (const auto& requests : all) violations += explored(requests, options) ? 0 : 1;
  std::cout << all.size() << " combinations of " << options.requests << " requests, "
            << (options.bound ? "at most " + std::to_string(*options.bound) + " preemptions" : "every schedule") << ": "
            << violations << " with a violation\n";
  return violations == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace halvo::interleaving

int main(int argc, char** argv) {
  const auto options = halvo::interleaving::parsed({argv + 1, argv + argc});
  if (options) return halvo::interleaving::explore(*options);
  std::cerr << "usage: tests/explore [--requests N] [--bound PREEMPTIONS]\n";
  return 64;
}
