#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(JudgeTest, AHealthyMacHasNoFinding) { EXPECT_THAT(judge(healthyMac()), IsEmpty()); }

class ServiceFinding : public testing::TestWithParam<DamageRow> {};

TEST_P(ServiceFinding, IsTheOnlyOne) { EXPECT_THAT(findingsAfter(GetParam()), ElementsAre(GetParam().finding)); }

INSTANTIATE_TEST_SUITE_P(
    Table, ServiceFinding,
    testing::Values(
        DamageRow{"Unreachable",
                  [](Examination& seen) {
                    seen.service = {.state = ServiceState::unreachable, .explanation = "no such service"};
                  },
                  {"service-unreachable", "The helper cannot be reached (no such service).",
                   "It is not registered or not allowed to start, or does not take this program for the application. "
                   "Open the Halvo application, which registers it, and allow it in System Settings, Login Items. Its "
                   "lines in the system log tell whom it refused."}},
        DamageRow{"UnreachableWithoutExplanation",
                  [](Examination& seen) { seen.service = {.state = ServiceState::unreachable, .explanation = {}}; },
                  {"service-unreachable", "The helper cannot be reached.",
                   "It is not registered or not allowed to start, or does not take this program for the application. "
                   "Open the Halvo application, which registers it, and allow it in System Settings, Login Items. Its "
                   "lines in the system log tell whom it refused."}},
        DamageRow{"Silent",
                  [](Examination& seen) { seen.service = {.state = ServiceState::silent, .explanation = {}}; },
                  {"service-silent", "The helper did not reply in time.",
                   "It may be stopped, or the Mac be very busy. Try again with a longer --timeout; if that does not "
                   "help, end it with \"sudo killall halvo-helper\", unless an install or a removal runs: the next "
                   "request starts it anew."}},
        DamageRow{"Strange",
                  [](Examination& seen) { seen.service = {.state = ServiceState::strange, .explanation = "hello"}; },
                  {"service-strange", "The helper gave a reply that this program does not know (hello).",
                   "Application and helper are of different versions, or something else answers in its place. Put the "
                   "newest application into /Applications and open it, which registers its own helper."}},
        DamageRow{"OlderHelper",
                  [](Examination& seen) { seen.service.helperVersion = 5; },
                  {"helper-version", "The helper speaks version 5 of the protocol, this program version 6.",
                   "Application and helper are of different versions. Put the newest application into /Applications "
                   "and open it, which registers its own helper."}},
        DamageRow{"NewerHelper",
                  [](Examination& seen) { seen.service.helperVersion = 7; },
                  {"helper-version", "The helper speaks version 7 of the protocol, this program version 6.",
                   "Application and helper are of different versions. Put the newest application into /Applications "
                   "and open it, which registers its own helper."}},
        DamageRow{"HelperWithoutVersion",
                  [](Examination& seen) { seen.service.helperVersion.reset(); },
                  {"helper-version", "The helper speaks version 0 of the protocol, this program version 6.",
                   "Application and helper are of different versions. Put the newest application into /Applications "
                   "and open it, which registers its own helper."}},
        DamageRow{"UnknownUsers",
                  [](Examination& seen) { seen.service.graphicalUsers.reset(); },
                  {"users-unknown", "The helper did not tell who has a graphical session.",
                   "It may have ended meanwhile, or wait for a tool of the system. Run doctor again."}},
        DamageRow{"RightMissing",
                  [](Examination& seen) { seen.rightAfter = RightState::missing; },
                  {"right-missing", "The right com.halvo.helper.manage-system is missing, or cannot be read.",
                   "Without it the helper refuses every change. It writes the right whenever it starts: end it with "
                   "\"sudo killall halvo-helper\", unless an install or a removal runs, and run doctor again."}},
        DamageRow{"RightUnsound",
                  [](Examination& seen) { seen.rightAfter = RightState::unsound; },
                  {"right-unsound", "The right com.halvo.helper.manage-system is not as the helper writes it.",
                   "A helper that finds it so refuses every change. Look for software that rewrites authorization "
                   "rights. The helper writes it anew whenever it starts: end it with \"sudo killall halvo-helper\", "
                   "unless an install or a removal runs, and run doctor again."}},
        DamageRow{"RightRepaired",
                  [](Examination& seen) { seen.rightBefore = RightState::unsound; },
                  {"right-repaired",
                   "The right com.halvo.helper.manage-system was not as the helper writes it, until it was started by "
                   "this question.",
                   "The helper has put it right. If this comes again, look for software that rewrites authorization "
                   "rights."}}),
    [](const auto& row) { return std::string(row.param.name); });

// The first start of a helper.
TEST(JudgeTest, ARightThatTheHelperHasJustMadeIsNoFinding) {
  Examination seen = healthyMac();
  seen.rightBefore = RightState::missing;

  EXPECT_THAT(judge(seen), IsEmpty());
}

TEST(JudgeTest, ARightThatStaysUnsoundIsOneFinding) {
  Examination seen = healthyMac();
  seen.rightBefore = RightState::unsound;
  seen.rightAfter = RightState::unsound;

  EXPECT_THAT(judge(seen), ElementsAre(testing::Field(&Finding::code, std::string_view("right-unsound"))));
}

}  // namespace
}  // namespace halvo
