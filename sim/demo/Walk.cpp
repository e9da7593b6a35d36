#include "sim/demo/Walk.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "sim/demo/Stage.h"

namespace halvo::sim {
namespace {

struct Road {
  void (*walk)(Stage& stage);
  int steps;
  int needs;  // the road that has to be walked before it; itself when none has
};

constexpr std::array kRoads = {
    Road{walkFirstContact, 2, 0}, Road{walkInstalls, 5, 1},     Road{walkRefusedPackages, 6, 2},
    Road{walkAudio, 2, 3},        Road{walkRollback, 1, 1},     Road{walkStrangersAndIdleness, 2, 5},
    Road{walkUninstall, 3, 1},    Road{walkWholeRemoval, 3, 7}, Road{walkReinstall, 1, 7},
    Road{walkTurns, 1, 8},
};

// The roads that lead to the wanted steps, all when none is named.
std::set<std::size_t> roadsTo(const std::set<int>& wanted) {
  std::set<std::size_t> chosen;
  int first = 1;
  for (std::size_t i = 0; i < kRoads.size(); first += kRoads[i].steps, ++i) {
    const auto next = wanted.lower_bound(first);
    if (!wanted.empty() && (next == wanted.end() || *next >= first + kRoads[i].steps)) continue;
    for (std::size_t road = i; chosen.insert(road).second;) road = static_cast<std::size_t>(kRoads[road].needs);
  }
  return chosen;
}

}  // namespace

int stepCount() {
  return std::accumulate(kRoads.begin(), kRoads.end(), 0, [](int sum, const Road& road) { return sum + road.steps; });
}

std::vector<Step> walk(const std::set<int>& wanted, const std::function<void(const Step&)>& show) {
  std::vector<Step> shown;
  int number = 0;
  Stage stage([&](Step step) {
    step.number = ++number;
    if (!wanted.empty() && !wanted.contains(number) && step.surprises.empty()) return;
    show(step);
    shown.push_back(std::move(step));
  });
  const std::set<std::size_t> chosen = roadsTo(wanted);
  int before = 0;
  for (std::size_t i = 0; i < kRoads.size(); before += kRoads[i].steps, ++i) {
    if (!chosen.contains(i)) continue;
    number = before;
    kRoads[i].walk(stage);
    if (number != before + kRoads[i].steps) throw std::logic_error("a road has another number of steps than is said");
  }
  return shown;
}

}  // namespace halvo::sim
