#include "sim/launchd/ControlMessages.h"

#include <gtest/gtest.h>

#include "sim/launchd/JobState.h"

namespace halvo::sim {
namespace {

TEST(ControlMessagesTest, ARequestSurvivesTheJourney) {
  const ControlRequest request{.verb = "bootstrap", .arguments = {"system", "/a b/ü\n.plist"}};

  EXPECT_EQ(requestFromLine(toLine(request)), request);
}

TEST(ControlMessagesTest, AReplySurvivesTheJourney) {
  const ControlReply reply{5, "Input/output error\nmore"};

  EXPECT_EQ(replyFromLine(toLine(reply)), reply);
}

TEST(ControlMessagesTest, AMessageIsOneLine) {
  const std::string line = toLine(ControlReply{1, "a\nb"});

  EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(ControlMessagesTest, WhatIsNoMessageIsNothing) {
  EXPECT_EQ(requestFromLine("garbage"), std::nullopt);
  EXPECT_EQ(requestFromLine("{\"verb\":\"print\"}"), std::nullopt);
  EXPECT_EQ(requestFromLine("{\"verb\":1,\"arguments\":[]}"), std::nullopt);
  EXPECT_EQ(replyFromLine("{}"), std::nullopt);
}

TEST(JobStateTest, AListSurvivesTheJourney) {
  const std::vector<JobState> jobs = {{"system", "a", "/bin/a", 17, 2, std::nullopt},
                                      {"gui/501", "b", "/bin/b", std::nullopt, 0, 143}};

  EXPECT_EQ(jobStatesFromJSON(jobStatesToJSON(jobs)), jobs);
}

TEST(JobStateTest, WhatIsNoListIsNothing) {
  EXPECT_EQ(jobStatesFromJSON(""), std::nullopt);
  EXPECT_EQ(jobStatesFromJSON("{}"), std::nullopt);
  EXPECT_EQ(jobStatesFromJSON("[{\"label\":\"a\"}]"), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
