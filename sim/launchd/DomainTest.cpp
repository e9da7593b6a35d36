#include "sim/launchd/Domain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;

struct TargetRow {
  std::string name;
  std::string text;
  std::optional<JobTarget> target;
};

class JobTargetParser : public testing::TestWithParam<TargetRow> {};

TEST_P(JobTargetParser, Understands) { EXPECT_EQ(parseJobTarget(GetParam().text), GetParam().target); }

INSTANTIATE_TEST_SUITE_P(Table, JobTargetParser,
                         testing::Values(TargetRow{"System", "system", JobTarget{"system", ""}},
                                         TargetRow{"SystemJob", "system/a.b", JobTarget{"system", "a.b"}},
                                         TargetRow{"Gui", "gui/501", JobTarget{"gui/501", ""}},
                                         TargetRow{"GuiJob", "gui/501/a.b", JobTarget{"gui/501", "a.b"}},
                                         TargetRow{"Empty", "", std::nullopt},
                                         TargetRow{"UnknownDomain", "pid/1", std::nullopt},
                                         TargetRow{"SystemPrefix", "systems", std::nullopt},
                                         TargetRow{"GuiWithoutUid", "gui/", std::nullopt},
                                         TargetRow{"GuiWithName", "gui/user501", std::nullopt},
                                         TargetRow{"GuiNegative", "gui/-1", std::nullopt}),
                         [](const auto& row) { return row.param.name; });

TEST(DomainTest, GuiDomainsAreThoseOfLoggedInUsers) {
  const TemporaryDirectory folder;
  const auto sessions = folder.write("gui-sessions", "501\nnobody\n\n502\n");

  EXPECT_THAT(guiSessions(sessions), ElementsAre(501, 502));
  EXPECT_TRUE(domainExists("gui/502", sessions));
  EXPECT_FALSE(domainExists("gui/503", sessions));
}

TEST(DomainTest, TheSystemDomainNeedsNobodyLoggedIn) { EXPECT_TRUE(domainExists("system", "/nowhere")); }

TEST(DomainTest, JobsRunAsTheDomainsUser) {
  EXPECT_EQ(domainUser("system"), 0U);
  EXPECT_EQ(domainUser("gui/502"), 502U);
}

}  // namespace
}  // namespace halvo::sim
