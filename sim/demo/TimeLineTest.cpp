#include "sim/demo/TimeLine.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Request request(const std::string& command, const std::string& reply, Moment began, Moment ended) {
  Request made;
  made.command = command;
  made.reply = reply;
  made.began = began;
  made.ended = ended;
  return made;
}

ToolCall tool(const std::string& path, Moment began, Moment ended) {
  ToolCall call;
  call.tool = path;
  call.arguments = {"x"};
  call.began = began;
  call.ended = ended;
  return call;
}

Step install() {
  Step step;
  step.number = 5;
  step.title = "An install";
  step.requests = {request("app install", "true", 1000, 1900), request("app ping", "", 1100, 1200)};
  step.tools = {tool("/usr/sbin/installer", 1300, 1500), tool("/bin/launchctl", 1950, 1960)};
  step.waits = {{.reason = "a moment", .connection = 2, .began = 1110, .ended = 1120},
                {.reason = "nobody asks", .connection = 0, .began = 1970, .ended = 2000}};
  return step;
}

TEST(TimeLineTest, HasATrackForEachConnectionAndOneForWhatComesAfterItsAnswer) {
  EXPECT_THAT(
      timeLine(install()),
      ElementsAre(Track{"Connection 1",
                        {{Mark::Kind::request, "app install  -> true", 1000, 1900},
                         {Mark::Kind::tool, "/usr/sbin/installer x  -> 0", 1300, 1500}}},
                  Track{"Connection 2",
                        {{Mark::Kind::request, "app ping  -> no reply", 1100, 1200},
                         {Mark::Kind::wait, "Waits: a moment", 1110, 1120}}},
                  Track{"Connection 2, after the answer", {{Mark::Kind::tool, "/bin/launchctl x  -> 0", 1950, 1960}}},
                  Track{"No connection", {{Mark::Kind::wait, "Waits: nobody asks", 1970, 2000}}}));
}

TEST(TimeLineTest, AToolThatOutlivesItsRequestIsNotDrawnInIt) {
  Step step;
  step.requests = {request("app finalize", "true", 10, 20)};
  step.tools = {tool("/bin/launchctl", 15, 25)};

  EXPECT_THAT(
      timeLine(step),
      ElementsAre(Track{"Connection 1", {{Mark::Kind::request, "app finalize  -> true", 10, 20}}},
                  Track{"Connection 1, after the answer", {{Mark::Kind::tool, "/bin/launchctl x  -> 0", 15, 25}}}));
}

TEST(TimeLineTest, AStepInWhichNothingHappensHasNoTrack) { EXPECT_THAT(timeLine(Step{}), IsEmpty()); }

TEST(TimeLineTest, SpansFromTheFirstMarkToTheLast) {
  const Span span = spanOf(timeLine(install()));

  EXPECT_EQ(span.began, 1000);
  EXPECT_EQ(span.ended, 2000);
}

TEST(TraceTest, NamesStepsAndTracksAndCountsFromTheFirstMoment) {
  Step step;
  step.number = 5;
  step.title = "An install";
  step.requests = {request("app install", "true", 1000, 1900)};
  step.tools = {tool("/usr/sbin/installer", 1300, 1500)};

  EXPECT_EQ(nlohmann::json::parse(traceJSON({Step{}, step})), nlohmann::json::parse(R"({
    "displayTimeUnit": "ms",
    "traceEvents": [
      {"name": "process_name", "ph": "M", "pid": 5, "tid": 0, "args": {"name": "5. An install"}},
      {"name": "thread_name", "ph": "M", "pid": 5, "tid": 1, "args": {"name": "Connection 1"}},
      {"name": "app install  -> true", "cat": "request", "ph": "X", "ts": 0, "dur": 900, "pid": 5, "tid": 1},
      {"name": "/usr/sbin/installer x  -> 0", "cat": "tool", "ph": "X", "ts": 300, "dur": 200, "pid": 5, "tid": 1}
    ]})"));
}

TEST(TraceTest, LaterStepsGoOnInTheSameTime) {
  Step first;
  first.requests = {request("a", "b", 1000, 1001)};
  Step second;
  second.requests = {request("a", "b", 5000, 5001)};

  const auto trace = nlohmann::json::parse(traceJSON({first, second}));

  EXPECT_EQ(trace.at("traceEvents").back().at("ts"), 4000);
}

TEST(TraceTest, TextThatIsNoUtf8IsReplaced) {
  Step step;
  step.requests = {request("a \xFF\"\\", "", 1, 2)};

  const auto trace = nlohmann::json::parse(traceJSON({step}));

  EXPECT_EQ(trace.at("traceEvents").back().at("name"), "a \xEF\xBF\xBD\"\\  -> no reply");
}

TEST(TraceTest, AWalkOfNothingIsAnEmptyTrace) {
  EXPECT_EQ(nlohmann::json::parse(traceJSON({})).at("traceEvents"), nlohmann::json::array());
}

}  // namespace
}  // namespace halvo::sim
