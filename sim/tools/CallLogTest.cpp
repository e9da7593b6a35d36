#include "sim/tools/CallLog.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "sim/support/StateRoot.h"
#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::MatchesRegex;

class CallLogTest : public testing::Test {
 protected:
  CallLogTest() { setStateRoot(directory_.path()); }

  std::vector<json> calls() const {
    std::istringstream lines(directory_.read("calls.jsonl"));
    std::vector<json> parsed;
    for (std::string line; std::getline(lines, line);) parsed.push_back(json::parse(line));
    return parsed;
  }

  TemporaryDirectory directory_;
};

void appendOften(int times) {
  const std::string longArgument(3000, 'x');
  for (int i = 0; i < times; ++i) CallLog::append("/bin/tool", {longArgument}, i);
}

void appendFromThreads(int threads, int times) {
  std::vector<std::jthread> running;
  for (int i = 0; i < threads; ++i) running.emplace_back([times] { appendOften(times); });
}

TEST_F(CallLogTest, ACallIsOneObjectWithToolArgumentsAndStatus) {
  CallLog::append("/usr/sbin/pkgutil", {"--forget", "a \"b\"\n"}, 1);

  ASSERT_EQ(calls().size(), 1U);
  EXPECT_EQ(calls()[0]["tool"], "/usr/sbin/pkgutil");
  EXPECT_EQ(calls()[0]["arguments"], json({"--forget", "a \"b\"\n"}));
  EXPECT_EQ(calls()[0]["status"], 1);
}

TEST_F(CallLogTest, ACallWithoutArgumentsHasAnEmptyList) {
  CallLog::append("/bin/tool", {}, 0);

  EXPECT_EQ(calls().at(0)["arguments"], json::array());
}

TEST_F(CallLogTest, TheTimeIsInUtcToTheSecond) {
  CallLog::append("/bin/tool", {}, 0);

  EXPECT_THAT(calls().at(0)["time"].get<std::string>(),
              MatchesRegex("2[0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]T[0-9][0-9]:[0-9][0-9]:[0-9][0-9]Z"));
}

TEST_F(CallLogTest, AnArgumentThatIsNotUtf8IsRecordedWithReplacements) {
  CallLog::append("/bin/tool", {"a\xFF"}, 0);

  EXPECT_EQ(calls().at(0)["arguments"][0], "a\xEF\xBF\xBD");
}

TEST_F(CallLogTest, LinesOfConcurrentCallsStayWhole) {
  appendFromThreads(4, 100);

  EXPECT_EQ(calls().size(), 400U);
}

TEST_F(CallLogTest, EveryUserMayAppend) {
  CallLog::append("/bin/tool", {}, 0);

  const auto mode = std::filesystem::status(directory_.path() / "calls.jsonl").permissions();
  EXPECT_EQ(static_cast<unsigned>(mode), 0666U);
}

TEST_F(CallLogTest, ALineThatCannotBeWrittenIsReported) {
  setStateRoot(directory_.path() / "absent");
  testing::internal::CaptureStderr();

  CallLog::append("/bin/tool", {}, 0);

  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("/bin/tool: the call could not be recorded in"));
}

}  // namespace
}  // namespace halvo::sim
