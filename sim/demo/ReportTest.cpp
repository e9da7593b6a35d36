#include "sim/demo/Report.h"

#include <gmock/gmock.h>

namespace halvo::sim {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct EscapeRow {
  std::string name;
  std::string text;
  std::string markup;
};

class Escaping : public testing::TestWithParam<EscapeRow> {};

TEST_P(Escaping, LeavesNoMarkup) { EXPECT_EQ(escaped(GetParam().text), GetParam().markup); }

INSTANTIATE_TEST_SUITE_P(
    Table, Escaping,
    testing::Values(EscapeRow{"PlainText", "/Library/a b", "/Library/a b"},
                    EscapeRow{"Script", "<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
                    EscapeRow{"Quotes", R"(" onclick='x')", "&quot; onclick=&apos;x&apos;"},
                    EscapeRow{"Entity", "&lt;", "&amp;lt;"}, EscapeRow{"OtherLetters", "ä€😀", "ä€😀"},
                    EscapeRow{"IllFormed", "a\xFF\xC3(", "a\xEF\xBF\xBD\xEF\xBF\xBD("},
                    EscapeRow{"Surrogate", "\xED\xA0\x80<", "\xEF\xBF\xBD&lt;"},
                    EscapeRow{"CutShort", "a\xE2\x82", "a\xEF\xBF\xBD"},
                    EscapeRow{"Controls", std::string("a\0\x1B\x7F\xC2\x9B", 6),
                              "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                    EscapeRow{"LineEndsAndTabs", "a\n\tb", "a&#10;&#9;b"}),
    [](const auto& row) { return row.param.name; });

constexpr const char* kHostile = "<script>\"'&\xFF";
constexpr const char* kHarmless = "&lt;script&gt;&quot;&apos;&amp;\xEF\xBF\xBD";

// Everything that a page shows and that somebody else may have named.
Step hostileStep() {
  Step step;
  step.number = 3;
  step.title = kHostile;
  step.requests.push_back({.command = kHostile,
                           .reply = "false",
                           .status = 1,
                           .explanation = kHostile,
                           .log = {},
                           .began = 10,
                           .ended = 30});
  step.tools.push_back({.time = {}, .tool = kHostile, .arguments = {kHostile}, .status = 0, .began = 15, .ended = 20});
  step.waits.push_back({.reason = kHostile, .connection = 1, .began = 11, .ended = 12});
  step.after[std::string("/") + kHostile] = {.kind = FileState::Kind::file, .mode = 0644};
  step.after[std::string("/") + kHostile + "/below"] = {.kind = FileState::Kind::file, .mode = 0644};
  step.remarks = {kHostile};
  step.surprises = {kHostile};
  return step;
}

constexpr const char* kFrame = "@VERDICT@|@CONTENTS@|@REFUSALS@|@STEPS@";

TEST(ReportTest, NothingThatSomebodyElseNamedIsMarkup) {
  const std::string page = reportPage(kFrame, {hostileStep()});

  EXPECT_THAT(page, AllOf(Not(HasSubstr("<script")), Not(HasSubstr("\"'&")), Not(HasSubstr("\xFF"))));
  EXPECT_THAT(page, HasSubstr(kHarmless));
}

TEST(ReportTest, TextThatLooksLikeAPlaceOfTheFrameStaysText) {
  Step step;
  step.title = "@VERDICT@ @STEPS@";

  const std::string page = reportPage(kFrame, {step});

  EXPECT_THAT(page, AllOf(HasSubstr("<h2 id=\"step-0\" tabindex=\"-1\">0. @VERDICT@ @STEPS@</h2>"),
                          HasSubstr("1 of 1 steps went as expected.|")));
}

TEST(ReportTest, ListsARefusalWithItsReason) {
  Step step;
  step.number = 7;
  step.title = "Older";
  step.requests.resize(1);
  step.requests[0].command = "app install";
  step.requests[0].reply = R"({"code":"downgrade"})";
  step.requests[0].explanation = "Too old.";

  EXPECT_THAT(reportPage("@REFUSALS@", {step}),
              HasSubstr("<li class=\"refusal\"><a href=\"#step-7\">7. Older</a><br><code>app install</code><br>"
                        "<code>{&quot;code&quot;:&quot;downgrade&quot;}</code>, exit status 0<br>Too old.</li>"));
}

TEST(ReportTest, SaysThatNothingWasRefused) {
  EXPECT_EQ(reportPage("@REFUSALS@", {Step{}}), "<p>Nothing was refused.</p>");
}

TEST(ReportTest, CountsTheStepsThatWentAsExpected) {
  EXPECT_EQ(reportPage("@VERDICT@", {Step{}, hostileStep()}), "1 of 2 steps went as expected.");
}

TEST(ReportTest, ARequestWithoutToolsAndWaitsNeedsNoTimeLine) {
  Step step;
  step.requests.resize(1);

  EXPECT_THAT(reportPage("@STEPS@", {step}), Not(HasSubstr("Time line")));
}

TEST(ReportTest, BarsOfATimeLineLeadToTheirRowsAndSayWhatTheyAre) {
  const std::string page = reportPage("@STEPS@", {hostileStep()});

  EXPECT_THAT(page, HasSubstr("<a class=\"tool\" href=\"#event-3-3\" style=\"left:25.00%;width:25.00%\""));
  EXPECT_THAT(page, HasSubstr("begins at 0.0 ms, takes 0.0 ms\"></a>"));
  EXPECT_THAT(page, HasSubstr("<tr id=\"event-3-3\" tabindex=\"-1\">"));
}

}  // namespace
}  // namespace halvo::sim
