#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "platform/ServiceRegistration.h"
#include "platform/SystemLog.h"
#include "platform/SystemUptime.h"

namespace halvo {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::Optional;

// Standard error is a file meanwhile, which is one of the kinds that the log is shown on.
std::string shownBy(const std::function<void()>& logging) {
  testing::internal::CaptureStderr();
  logging();
  return testing::internal::GetCapturedStderr();
}

TEST(SystemLogContract, ShowsTheLineOnStandardError) {
  EXPECT_THAT(shownBy([] { halvoSystemLog("halvo-helper: up"); }), HasSubstr("halvo-helper: up\n"));
}

TEST(SystemLogContract, TakesTheTextAsDataAndNotAsAFormat) {
  EXPECT_THAT(shownBy([] { halvoSystemLog("100%@ %s%n%d"); }), HasSubstr("100%@ %s%n%d\n"));
}

TEST(SystemLogContract, ShowsTextBeyondASCII) {
  EXPECT_THAT(shownBy([] { halvoSystemLog("Gerät \U0001F3A7"); }), HasSubstr("Gerät \U0001F3A7\n"));
}

TEST(SystemLogContract, SurvivesIllFormedText) {
  EXPECT_THAT(shownBy([] {
                halvoSystemLog("before \xFF\xC3 after");
                halvoSystemLog("next");
              }),
              HasSubstr("next\n"));
}

TEST(SystemUptimeContract, NeverGoesBack) {
  const double first = halvoSystemUptime();
  const double second = halvoSystemUptime();

  EXPECT_GT(first, 0.0);
  EXPECT_GE(second, first);
}

TEST(SystemUptimeContract, CountsSeconds) {
  const double before = halvoSystemUptime();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const double passed = halvoSystemUptime() - before;

  EXPECT_GE(passed, 0.09);
  EXPECT_LT(passed, 60.0);
}

TEST(ServiceRegistrationContract, FailureIsDescribed) {
  EXPECT_THAT(halvoUnregisterDaemon("com.halvo.nobody-registered-this.plist"), Optional(Not("")));
  EXPECT_THAT(halvoRegisterDaemon("com.halvo.nobody-registered-this.plist"), Optional(Not("")));
}

TEST(ServiceRegistrationContract, ADaemonThatTheApplicationDoesNotBringIsNeitherEnabledNorWaitsForApproval) {
  EXPECT_THAT(halvoDaemonStatus("com.halvo.nobody-registered-this.plist"),
              testing::AnyOf(DaemonStatus::notFound, DaemonStatus::notRegistered));
}

}  // namespace
}  // namespace halvo
