#include "sim/demo/Options.h"

#include <gmock/gmock.h>

#include <sstream>

#include "sim/demo/Walk.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Words = std::vector<std::string>;

class OptionsTest : public testing::Test {
 protected:
  std::variant<DemoOptions, ParserExit> parse(const Words& words) { return parseOptions(words, out, err); }

  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(OptionsTest, WithoutAnythingEverythingIsShown) {
  const auto options = std::get<DemoOptions>(parse({}));

  EXPECT_THAT(options.only, IsEmpty());
  EXPECT_FALSE(options.quiet);
  EXPECT_EQ(options.report, "");
  EXPECT_EQ(options.trace, "");
}

TEST_F(OptionsTest, EachMayBeGiven) {
  const auto options = std::get<DemoOptions>(parse({"--only", "16,5", "--quiet", "--report=d", "--trace", "f"}));

  EXPECT_THAT(options.only, ElementsAre(5, 16));
  EXPECT_TRUE(options.quiet);
  EXPECT_EQ(options.report, "d");
  EXPECT_EQ(options.trace, "f");
}

TEST_F(OptionsTest, HelpIsNoError) {
  EXPECT_EQ(std::get<ParserExit>(parse({"--help"})).status, 0);
  EXPECT_THAT(out.str(), HasSubstr("--report"));
}

struct UsageRow {
  std::string name;
  Words words;
  std::string said;
};

class WrongOptions : public OptionsTest, public testing::WithParamInterface<UsageRow> {};

TEST_P(WrongOptions, AreExplained) {
  EXPECT_EQ(std::get<ParserExit>(parse(GetParam().words)).status, 64);
  EXPECT_THAT(err.str(), HasSubstr(GetParam().said));
  EXPECT_EQ(out.str(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, WrongOptions,
                         testing::Values(UsageRow{"Unknown", {"--loud"}, "--loud"}, UsageRow{"Word", {"5"}, "5"},
                                         UsageRow{"OnlyWithoutNumber", {"--only"}, "--only"},
                                         UsageRow{"OnlyNoNumber", {"--only", "x"}, "--only"},
                                         UsageRow{"OnlyZero", {"--only", "0"}, "--only"},
                                         UsageRow{
                                             "OnlyTooLarge", {"--only", std::to_string(stepCount() + 1)}, "--only"},
                                         UsageRow{"ReportEmpty", {"--report", ""}, "--report"},
                                         UsageRow{"TraceWithoutFile", {"--trace"}, "--trace"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
