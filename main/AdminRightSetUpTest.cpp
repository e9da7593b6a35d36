#include "main/AdminRightSetUp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HalvoHelper/testing/RecordedSystemLog.h"

namespace halvo {
namespace {

using testing::ElementsAre;

AdminRightDefinition definitionThatAnybodyMayUse() {
  AdminRightDefinition definition = halvoAdminRightDefinition();
  definition["class"] = std::string("allow");
  return definition;
}

struct SetUpRow {
  const char* name;
  std::int32_t written;
  std::optional<AdminRightDefinition> readBack;
  bool sound;
  const char* logLine;
};

class AdminRightSetUp : public testing::TestWithParam<SetUpRow> {};

TEST_P(AdminRightSetUp, IsJudgedByWhatTheDatabaseHolds) {
  const RecordedSystemLog systemLog;

  EXPECT_EQ(
      halvoSetUpAdminRight({.write = [] { return GetParam().written; }, .read = [] { return GetParam().readBack; }}),
      GetParam().sound);

  EXPECT_THAT(systemLog.lines(), ElementsAre(GetParam().logLine));
}

INSTANTIATE_TEST_SUITE_P(
    Table, AdminRightSetUp,
    testing::Values(
        SetUpRow{"WrittenAndSound", 0, halvoAdminRightDefinition(), true,
                 "halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=1"},
        SetUpRow{"NotWrittenButSound", -60005, halvoAdminRightDefinition(), true,
                 "halvo-helper: admin right com.halvo.helper.manage-system registered status=-60005 sound=1"},
        SetUpRow{"WrittenButUnsound", 0, definitionThatAnybodyMayUse(), false,
                 "halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=0"},
        SetUpRow{"WrittenButNotThere", 0, std::nullopt, false,
                 "halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=0"},
        SetUpRow{"NeitherWrittenNorThere", -60008, std::nullopt, false,
                 "halvo-helper: admin right com.halvo.helper.manage-system registered status=-60008 sound=0"}),
    [](const auto& row) { return row.param.name; });

TEST(AdminRightSetUpTest, ReadsBackAfterItHasWritten) {
  const RecordedSystemLog systemLog;
  std::vector<std::string> calls;
  const AdminRightAccess access{.write =
                                    [&] {
                                      calls.emplace_back("write");
                                      return 0;
                                    },
                                .read =
                                    [&] {
                                      calls.emplace_back("read");
                                      return std::optional(halvoAdminRightDefinition());
                                    }};

  EXPECT_TRUE(halvoSetUpAdminRight(access));

  EXPECT_THAT(calls, ElementsAre("write", "read"));
}

}  // namespace
}  // namespace halvo
