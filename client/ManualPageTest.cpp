// The manual page and the completions know what the program does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/ManualPage.h"
#include "client/CommandLine.h"
#include "client/ExitStatus.h"
#include "client/Options.h"

namespace halvo {
namespace {

std::string manualPage() { return contentsOf(HALVO_MANUAL_PAGE); }

// Every status of the program has a case: the compiler tells of one that is missing here.
std::string number(ExitStatus status) {
  switch (status) {
    case ExitStatus::success:
    case ExitStatus::refused:
    case ExitStatus::unauthorized:
    case ExitStatus::unreachable:
    case ExitStatus::interrupted:
    case ExitStatus::helperTooOld:
    case ExitStatus::usage:
    case ExitStatus::unusableInput:
    case ExitStatus::unwritableOutput:
    case ExitStatus::noReplyInTime:
    case ExitStatus::interruptedByUser:
      return std::to_string(static_cast<int>(status));
  }
  return {};
}

TEST(ManualPageTest, ListsEveryExitStatusAndNoOther) {
  EXPECT_THAT(itemsOf(sectionOf(manualPage(), "EXIT STATUS")),
              testing::ElementsAre(
                  number(ExitStatus::success), number(ExitStatus::refused), number(ExitStatus::unauthorized),
                  number(ExitStatus::unreachable), number(ExitStatus::interrupted), number(ExitStatus::helperTooOld),
                  number(ExitStatus::usage), number(ExitStatus::unusableInput), number(ExitStatus::unwritableOutput),
                  number(ExitStatus::noReplyInTime), number(ExitStatus::interruptedByUser)));
}

// In the page a word of its own, in the completions among others.
class KnownWord : public testing::TestWithParam<std::string_view> {
 protected:
  static testing::Matcher<std::string> holdsIt() {
    return testing::ContainsRegex("(^|[^a-z-])" + std::string(GetParam()) + "([^a-z-]|$)");
  }
};

TEST_P(KnownWord, IsInBothCompletions) {
  EXPECT_THAT(contentsOf(HALVO_COMPLETIONS "/halvo-app.bash"), holdsIt());
  EXPECT_THAT(contentsOf(HALVO_COMPLETIONS "/_halvo-app"), holdsIt());
}

INSTANTIATE_TEST_SUITE_P(Requests, KnownWord, testing::ValuesIn(requestNames().begin(), requestNames().end()));
INSTANTIATE_TEST_SUITE_P(Options, KnownWord, testing::ValuesIn(optionNames().begin(), optionNames().end()));

class DocumentedRequest : public testing::TestWithParam<std::string_view> {};

TEST_P(DocumentedRequest, HasAnItemOfTheManualPage) {
  EXPECT_THAT(manualPage(), testing::ContainsRegex("\n\\.It Cm " + std::string(GetParam()) + "[ \n]"));
}

INSTANTIATE_TEST_SUITE_P(Table, DocumentedRequest, testing::ValuesIn(requestNames().begin(), requestNames().end()));

class DocumentedOption : public testing::TestWithParam<std::string_view> {};

// The page writes the second dash only.
TEST_P(DocumentedOption, HasAnItemOfTheManualPage) {
  EXPECT_THAT(manualPage(),
              testing::ContainsRegex("\n\\.It (Fl h , )?Fl " + std::string(GetParam().substr(1)) + "[ \n]"));
}

INSTANTIATE_TEST_SUITE_P(Table, DocumentedOption, testing::ValuesIn(optionNames().begin(), optionNames().end()));

TEST(ManualPageTest, AloneListsThem) { EXPECT_THAT(std::string(helpText()), testing::Not(testing::HasSubstr(" 130"))); }

}  // namespace
}  // namespace halvo
