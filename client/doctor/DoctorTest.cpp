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
using testing::StartsWith;

class DoctorTest : public testing::Test {
 protected:
  DoctorTest() { helper->textReply = R"({"uids":[]})"; }

  ExitStatus run(const CommandLine& command = {.verb = Verb::doctor}) {
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    return runDoctor(command, conversation, out,
                     {.disk = Disk(root.path()),
                      .readRight =
                          [this] {
                            helper->requests.emplace_back("(right)");
                            return right;
                          },
                      .processes = [this] { return processes; },
                      .now = [] { return std::chrono::system_clock::time_point(std::chrono::hours(24)); }});
  }

  TemporaryDirectory root;
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

  EXPECT_THAT(out.str(), StartsWith("Date       1970-01-02 00:00:00 +0000\nService    answers"));
}

TEST_F(DoctorTest, FindingsHaveAStatusOfTheirOwn) {
  EXPECT_EQ(static_cast<int>(run()), 1);

  EXPECT_THAT(out.str(), HasSubstr("\n! None of the product's system parts is installed.\n"));
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

TEST_F(DoctorTest, ProgramsGetJSONWithTheStatus) {
  run({.verb = Verb::doctor, .json = true});

  EXPECT_THAT(out.str(), StartsWith(R"({"schema":1,"date":"1970-01-02 00:00:00 +0000","status":1,)"));
}

}  // namespace
}  // namespace halvo
