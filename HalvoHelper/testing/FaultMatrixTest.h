// What tests of the matrix of faults share: one road each.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "HalvoHelper/testing/FaultJudge.h"

namespace halvo {

inline void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

inline std::string roadName(const testing::TestParamInfo<Road>& info) { return info.param.name; }

inline std::vector<Road> roadsOf(Road::Request request) {
  std::vector<Road> roads = allRoads();
  std::erase_if(roads, [=](const Road& road) { return road.request != request; });
  return roads;
}

inline std::vector<Road> pairedRoadsOf(Road::Request request) {
  std::vector<Road> roads = roadsOf(request);
  std::erase_if(roads, [](const Road& road) { return !road.inPairs; });
  return roads;
}

class FaultMatrixTest : public testing::TestWithParam<Road> {
 protected:
  [[nodiscard]] static const Road& road() { return GetParam(); }

  // In memory. Each with the faults that led to it; a matrix without cases is one too.
  [[nodiscard]] static std::vector<std::string> breachesOfAll(const std::vector<Faults>& cases) {
    std::vector<std::string> all;
    if (cases.empty()) all.emplace_back("no cases");
    for (const Faults& faults : cases) {
      const FaultRun run = halvoRunInMemory(road(), faults);
      for (const std::string& breach : breachesOf(run)) all.push_back(faultsInWords(run) + ": " + breach);
    }
    return all;
  }
};

}  // namespace halvo
