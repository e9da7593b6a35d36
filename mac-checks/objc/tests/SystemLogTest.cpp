#include "platform/SystemLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "mac-checks/objc/doubles/UnifiedLogDouble.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(SystemLogTest, ALineIsOneEntry) {
  const LogCapture log;

  halvoSystemLog("halvo-helper: rejected unauthorized client pid=12");

  EXPECT_THAT(log.lines(), ElementsAre("halvo-helper: rejected unauthorized client pid=12"));
}

TEST(SystemLogTest, TextIsNeverAFormat) {
  const LogCapture log;

  halvoSystemLog("%@ %s %n 100%");

  EXPECT_THAT(log.lines(), ElementsAre("%@ %s %n 100%"));
}

TEST(SystemLogTest, IllFormedTextIsShownWithReplacementCharacters) {
  const LogCapture log;

  halvoSystemLog("leaf \xFF");

  EXPECT_THAT(log.lines(), ElementsAre("leaf \xEF\xBF\xBD"));
}

TEST(SystemLogTest, ANulHidesNothingBehindIt) {
  const LogCapture log;

  halvoSystemLog(std::string_view("rejected\0 pid=12", 16));

  EXPECT_THAT(log.lines(), ElementsAre("rejected\xEF\xBF\xBD pid=12"));
}

TEST(SystemLogTest, AnEmptyLineIsDropped) {
  const LogCapture log;

  halvoSystemLog("");

  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(SystemLogTest, NonASCIITextIsKept) {
  const LogCapture log;

  halvoSystemLog("H\xC3\xA4lvo \xF0\x9F\x8E\xA7");

  EXPECT_THAT(log.lines(), ElementsAre("H\xC3\xA4lvo \xF0\x9F\x8E\xA7"));
}

TEST(SystemLogTest, AMebibyteIsOneEntry) {
  const LogCapture log;

  halvoSystemLog(std::string(1 << 20, 'x'));

  EXPECT_THAT(log.lines(), ElementsAre(std::string(1 << 20, 'x')));
}

TEST(SystemLogTest, AnyThreadMayLog) {
  const LogCapture log;

  std::thread first([] { halvoSystemLog("first"); });
  std::thread second([] { halvoSystemLog("second"); });
  first.join();
  second.join();

  EXPECT_THAT(log.lines(), UnorderedElementsAre("first", "second"));
}

}  // namespace
}  // namespace halvo::sim
