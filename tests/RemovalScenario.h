// What the scenarios of the product's removal have in common.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/Scenario.h"

namespace halvo::sim {

class RemovalScenario : public Scenario {
 protected:
  void installed() {
    start();
    ASSERT_EQ(reply(ProductMachine::install(machine.package({}))), kInstalledReply);
  }

  bool stands(const std::string& path) { return std::filesystem::exists(mac().path(path)); }

  // The tools that ran since `count` calls.
  std::vector<std::string> toolRunsSince(std::size_t count) {
    std::vector<std::string> runs = toolRuns();
    runs.erase(runs.begin(), runs.begin() + static_cast<std::ptrdiff_t>(count));
    return runs;
  }
};

}  // namespace halvo::sim
