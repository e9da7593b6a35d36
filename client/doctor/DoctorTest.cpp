#include "client/doctor/Doctor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/testing/ScriptedHelper.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::chrono::system_clock::time_point kNow = std::chrono::sys_days(std::chrono::year(2026) / 2 / 3) +
                                                       std::chrono::hours(4) + std::chrono::minutes(5) +
                                                       std::chrono::seconds(6);

class DoctorTest : public testing::Test {
 protected:
  DoctorTest() { helper->textReply = R"({"uids":[]})"; }

  ExitStatus run(const CommandLine& command = {.verb = Verb::doctor}) {
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    return runDoctor(command, conversation, out,
                     {.disk = Disk(place),
                      .readRight =
                          [this] {
                            helper->requests.emplace_back("(right)");
                            return right;
                          },
                      .processes = [this] { return processes; },
                      .now = [] { return kNow; }});
  }

  const CommandLine forPrograms{.verb = Verb::doctor, .json = true};
  TemporaryDirectory root;
  std::string place = root.path();
  std::shared_ptr<ScriptedHelper> helper = std::make_shared<ScriptedHelper>();
  std::optional<AdminRightDefinition> right = halvoAdminRightDefinition();
  std::optional<std::vector<ProcessEntry>> processes = std::vector<ProcessEntry>{};
  std::ostringstream out;
};

// A helper that starts writes the right anew.
TEST_F(DoctorTest, TheRightIsReadBeforeTheHelperIsAskedAndAgainAfterwards) {
  run();

  EXPECT_THAT(helper->requests, ElementsAre("(right)", "ping", "users", "(right)"));
}

TEST_F(DoctorTest, TheReportHasTheDateInUniversalTime) {
  run();

  EXPECT_THAT(out.str(), StartsWith("Date       2026-02-03 04:05:06 +0000\nService    answers"));
}

TEST_F(DoctorTest, FindingsHaveAStatusOfTheirOwn) {
  EXPECT_EQ(static_cast<int>(run()), 1);

  EXPECT_THAT(out.str(), HasSubstr("\n! None of the product's system parts is installed.\n"));
}

// Whoever has no rights to look is not told that something is wrong.
TEST_F(DoctorTest, WhatNobodyMayLookAtIsNoFinding) {
  place = "/" + std::string(300, 'x');

  EXPECT_EQ(static_cast<int>(run()), 0);

  EXPECT_THAT(out.str(), Not(HasSubstr("!")));
}

TEST_F(DoctorTest, AnUnreachableHelperHasAnother) {
  helper->pingFailure = ServiceFailure{ServiceFailure::Kind::unreachable, "no such service"};

  EXPECT_EQ(static_cast<int>(run()), 4);

  EXPECT_THAT(out.str(), HasSubstr("! The helper cannot be reached (no such service).\n"));
  EXPECT_THAT(out.str(), HasSubstr("! None of the product's system parts is installed.\n"));
}

TEST_F(DoctorTest, AHelperThatIsNotWaitedForCountsAsUnreachable) {
  helper->pingsAreAnswered = false;

  EXPECT_EQ(static_cast<int>(run({.verb = Verb::doctor, .timeout = std::chrono::seconds(1)})), 4);
}

TEST_F(DoctorTest, ASoundRightIsSeen) {
  run(forPrograms);

  EXPECT_THAT(out.str(), HasSubstr(R"("right":{"before":"sound","after":"sound"})"));
}

TEST_F(DoctorTest, AMissingRightIsSeen) {
  right.reset();
  run(forPrograms);

  EXPECT_THAT(out.str(), HasSubstr(R"("right":{"before":"missing","after":"missing"})"));
}

TEST_F(DoctorTest, ARightThatTheHelperRepairsIsSeenAsItWasAndIs) {
  right->insert_or_assign("shared", true);
  helper->duringRequest = [this] { right = halvoAdminRightDefinition(); };
  run(forPrograms);

  EXPECT_THAT(out.str(), HasSubstr(R"("right":{"before":"unsound","after":"sound"})"));
}

TEST_F(DoctorTest, AnUnsoundRightIsSeen) {
  right->insert_or_assign("shared", true);
  run();

  EXPECT_THAT(out.str(), HasSubstr("Right      com.halvo.helper.manage-system: not as the helper writes it\n"));
}

TEST_F(DoctorTest, ASlowToolIsSeen) {
  processes->push_back({.process = 5, .parent = 1, .user = 0, .name = "halvo-helper"});
  processes->push_back({.process = 6, .parent = 5, .user = 0, .name = "installer", .age = std::chrono::minutes(25)});
  run();

  EXPECT_THAT(out.str(), HasSubstr("Tools      installer for 25 min\n"));
  EXPECT_THAT(out.str(), HasSubstr("! The helper's installer, process 6, has been running for 25 min.\n"));
}

TEST_F(DoctorTest, ProcessesThatCannotBeListedAreUnknown) {
  processes.reset();
  run(forPrograms);

  EXPECT_THAT(out.str(), HasSubstr(R"("tools":null)"));
}

struct TraceRow {
  const char* name;
  const char* file;
  const char* contents;
  const char* code;
};

class TraceOnDisk : public DoctorTest, public testing::WithParamInterface<TraceRow> {};

TEST_P(TraceOnDisk, IsFound) {
  root.makeFile(GetParam().file, GetParam().contents);
  run(forPrograms);

  EXPECT_THAT(out.str(), HasSubstr(std::string("{\"code\":\"") + GetParam().code + "\""));
}

INSTANTIATE_TEST_SUITE_P(
    Table, TraceOnDisk,
    testing::Values(TraceRow{"Staging", "var/db/halvo/install-staging/Halvo.pkg", "", "staging-left"},
                    TraceRow{"Part", "Library/PrivilegedHelperTools/halvo-broker", "", "part-missing"},
                    TraceRow{"Snapshot", "var/db/halvo/install-rollback/1771000000", "", "snapshot-kind"},
                    TraceRow{"InstallLog", "var/log/halvo-install.log",
                             "2026-01-28 04:05:06 +0000: REFUSED untrusted package (unsigned): X\n", "install-refused"},
                    TraceRow{"UninstallLog", "var/log/halvo-uninstall.log",
                             "2026-01-28 04:05:06 +0000: uninstall incomplete; leftover: /x\n", "removal-incomplete"}),
    [](const auto& row) { return std::string(row.param.name); });

// Seven days and a second.
TEST_F(DoctorTest, WhatWasRefusedLongAgoIsNot) {
  root.makeFile("var/log/halvo-install.log", "2026-01-27 04:05:05 +0000: REFUSED untrusted package (unsigned): X\n");
  run(forPrograms);

  EXPECT_THAT(out.str(), Not(HasSubstr("install-refused")));
}

TEST_F(DoctorTest, ProgramsGetJSONWithTheStatus) {
  run(forPrograms);

  EXPECT_THAT(out.str(), StartsWith(R"({"schema":1,"date":"2026-02-03 04:05:06 +0000","status":1,)"));
}

}  // namespace
}  // namespace halvo
