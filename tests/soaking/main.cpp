// halvo-soak: kills, idle exits and hostile clients by the hundred against the real helper in a simulated Mac.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/soaking/Soak.h"

namespace {

using halvo::soak::Plan;

constexpr int kViolated = 1;
constexpr int kUsageError = 64;
constexpr int kMachineUnavailable = 70;

constexpr std::string_view kUsage =
    "usage: halvo-soak [--seed S] [--short] [kills|idle|clients ...]; see tests/soak --help\n";

struct Driver {
  std::string_view name;
  void (*run)(const Plan&);
};

constexpr Driver kDrivers[] = {
    {"kills", halvo::soak::soakKills}, {"idle", halvo::soak::soakIdle}, {"clients", halvo::soak::soakClients}};

struct Order {
  Plan plan;
  std::vector<std::string_view> names = {};
};

bool readSeed(std::string_view word, unsigned& seed) {
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), seed);
  return error == std::errc() && end == word.data() + word.size();
}

// False at a word that has no meaning.
bool read(const std::vector<std::string_view>& words, Order& order) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view word = words[i];
    if (word == "--short") {
      order.plan.isShort = true;
    } else if (word == "--seed") {
      if (i + 1 == words.size() || !readSeed(words[++i], order.plan.seed)) return false;
    } else if (std::ranges::find(kDrivers, word, &Driver::name) != std::end(kDrivers)) {
      order.names.push_back(word);
    } else {
      return false;
    }
  }
  return true;
}

void run(const Driver& driver, const Plan& plan) {
  const auto begin = std::chrono::steady_clock::now();
  std::cout << "tests/soak: " << driver.name << std::endl;
  driver.run(plan);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
  std::cout << "tests/soak: " << driver.name << " held, " << seconds.count() << " s" << std::endl;
}

int runAll(const Order& order) {
  std::cout << "tests/soak: seed " << order.plan.seed << std::endl;
  for (const Driver& driver : kDrivers) {
    const bool wanted = order.names.empty() || std::ranges::find(order.names, driver.name) != order.names.end();
    if (!wanted) continue;
    try {
      run(driver, order.plan);
    } catch (const halvo::soak::Violation& violation) {
      std::cerr << "tests/soak: VIOLATION in " << driver.name << ": " << violation.what()
                << "\ntests/soak: repeat with "
                << "tests/soak --seed " << order.plan.seed << (order.plan.isShort ? " --short " : " ") << driver.name
                << std::endl;
      return kViolated;
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  Order order{.plan = {.seed = std::random_device()()}};
  if (!read({argv + std::min(argc, 1), argv + argc}, order)) {
    std::cerr << kUsage;
    return kUsageError;
  }
  try {
    return runAll(order);
  } catch (const std::exception& error) {
    std::cerr << "tests/soak: " << error.what() << std::endl;
    return kMachineUnavailable;
  }
}
