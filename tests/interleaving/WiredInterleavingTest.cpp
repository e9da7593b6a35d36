// Concurrent requests as clients make them, in every order there is: the wiring's mutex leaves none of the holes that
// the sequences have without it. All pairs are explored whole, and some groups of three; tests/explore does all of
// those, and longer ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/interleaving/Requests.h"

namespace halvo::interleaving {
namespace {

using testing::Eq;

using enum Request;

std::string camelCase(std::string_view words) {
  std::string name;
  bool begins = true;
  for (const char c : words) {
    if (c != ' ') name += begins ? static_cast<char>(c - 'a' + 'A') : c;
    begins = c == ' ';
  }
  return name;
}

std::string groupName(const testing::TestParamInfo<std::vector<Request>>& row) {
  std::string text;
  for (const Request request : row.param) text += (text.empty() ? "" : "And") + camelCase(name(request));
  return text;
}

TEST(WiredRequest, AGoodPackageReachesTheInstaller) {
  EXPECT_THAT(Explorer(wired({install}, {Rule::noInstall})).run().violation, Eq("the installer runs"));
}

TEST(WiredRequest, RefusedInstallsNeverReachTheInstaller) {
  const std::vector<Request> refused = {evilInstall, unstageableInstall, unauthorizedInstall};

  EXPECT_THAT(Explorer(wired(refused, {Rule::noInstall})).run().violation, Eq(std::nullopt));
}

class WiredRequests : public testing::TestWithParam<std::vector<Request>> {};

TEST_P(WiredRequests, KeepEveryRuleInEverySchedule) {
  const Exploration result = Explorer(wired(GetParam())).run();

  EXPECT_THAT(result.violation, Eq(std::nullopt)) << testing::PrintToString(result.story);
  EXPECT_GT(result.schedules, 50);
  RecordProperty("schedules", std::to_string(result.schedules));
  RecordProperty("states", std::to_string(result.states));
}

INSTANTIATE_TEST_SUITE_P(Pairs, WiredRequests, testing::ValuesIn(combinations(2)), groupName);

INSTANTIATE_TEST_SUITE_P(Threes, WiredRequests,
                         testing::Values(std::vector{install, unstageableInstall, evilInstall},
                                         std::vector{install, evilInstall, uninstall},
                                         std::vector{install, bundleRemoval, finalRemoval},
                                         std::vector{evilInstall, uninstall, finalRemoval}),
                         groupName);

}  // namespace
}  // namespace halvo::interleaving
