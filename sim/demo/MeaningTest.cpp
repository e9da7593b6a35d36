#include "sim/demo/Meaning.h"

#include <gmock/gmock.h>

namespace halvo::sim {
namespace {

using testing::Optional;

struct StatusRow {
  std::string name;
  std::string tool;
  int status;
  std::string end;
};

class StatusWord : public testing::TestWithParam<StatusRow> {};

TEST_P(StatusWord, StandsBehindTheStatus) {
  const ToolCall call{.time = {}, .tool = GetParam().tool, .arguments = {"a", "b"}, .status = GetParam().status};

  EXPECT_EQ(describe(call), GetParam().tool + " a b  -> " + GetParam().end);
}

INSTANTIATE_TEST_SUITE_P(
    Table, StatusWord,
    testing::Values(StatusRow{"Success", "/bin/launchctl", 0, "0"},
                    StatusRow{"NoSuchProcess", "/bin/launchctl", 3, "3 (no such process or service)"},
                    StatusRow{"InputOutput", "/bin/launchctl", 5, "5 (input/output error)"},
                    StatusRow{"InProgress", "/bin/launchctl", 36, "36 (operation in progress)"},
                    StatusRow{"AlreadyInProgress", "/bin/launchctl", 37, "37 (already in progress)"},
                    StatusRow{"NoSuchDomain", "/bin/launchctl", 112, "112 (no such domain)"},
                    StatusRow{"NoSuchService", "/bin/launchctl", 113, "113 (no such service)"},
                    StatusRow{"Disabled", "/bin/launchctl", 119, "119 (service disabled)"},
                    StatusRow{"NoAction", "/bin/launchctl", 125, "125 (domain does not support action)"},
                    StatusRow{"UnknownStatus", "/bin/launchctl", 4, "4"},
                    StatusRow{"AnotherTool", "/usr/sbin/installer", 113, "113"}),
    [](const auto& row) { return row.param.name; });

Request between(Moment began, Moment ended) {
  Request request;
  request.began = began;
  request.ended = ended;
  return request;
}

ToolCall at(Moment began) {
  ToolCall call;
  call.began = began;
  call.ended = began + 1;
  return call;
}

TEST(ConnectionOfTest, IsTheOldestWithoutAnAnswer) {
  Step step;
  step.requests = {between(10, 50), between(20, 60)};

  EXPECT_EQ(connectionOf(step, at(15)), 1U);
  EXPECT_EQ(connectionOf(step, at(30)), 1U);
  EXPECT_EQ(connectionOf(step, at(55)), 2U);
}

TEST(ConnectionOfTest, WhatRunsAfterAllAnswersBelongsToTheLast) {
  Step step;
  step.requests = {between(10, 20), between(30, 40), between(60, 70)};

  EXPECT_EQ(connectionOf(step, at(50)), 2U);
  EXPECT_EQ(connectionOf(step, at(80)), 3U);
}

TEST(ConnectionOfTest, ThereIsNoneBeforeTheFirstRequest) {
  Step step;
  step.requests = {between(10, 20)};

  EXPECT_EQ(connectionOf(step, at(5)), 0U);
  EXPECT_EQ(connectionOf(Step{}, at(5)), 0U);
}

constexpr const char* kLogged = "2026-01-01 00:00:00 halvo-helper[7]: halvo-helper: ";

std::optional<std::string> reasonFor(const std::string& reply, const std::string& log = {}) {
  Request request;
  request.reply = reply;
  request.explanation = "halvo-app: Because.\nReally.\n";
  request.log = log.empty() ? "" : "first line\n" + (kLogged + log);
  return refusalReason(request);
}

struct RefusalRow {
  std::string name;
  std::string reply;
};

class RefusedReply : public testing::TestWithParam<RefusalRow> {};

TEST_P(RefusedReply, HasTheExplanationForItsReason) {
  EXPECT_THAT(reasonFor(GetParam().reply), Optional(std::string("halvo-app: Because. Really.")));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedReply,
    testing::Values(RefusalRow{"Unauthorized", R"({"code":"unauthorized"})"},
                    RefusalRow{"Downgrade", R"({"code":"downgrade","installed":"2","incoming":"1"})"},
                    RefusalRow{"Untrusted", R"({"code":"untrusted_package","reason":"unsigned"})"},
                    RefusalRow{"Audio", R"({"code":"audio_active"})"}, RefusalRow{"Bundle", "false"}),
    [](const auto& row) { return row.param.name; });

class AcceptedReply : public testing::TestWithParam<RefusalRow> {};

TEST_P(AcceptedReply, IsNoRefusal) { EXPECT_EQ(reasonFor(GetParam().reply), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Table, AcceptedReply,
                         testing::Values(RefusalRow{"Done", R"({"code":"ok"})"}, RefusalRow{"True", "true"},
                                         RefusalRow{"FailedInstall", R"({"code":"rolled_back","log_path":"/l"})"},
                                         RefusalRow{"IncompleteRemoval", R"({"code":"incomplete","log_path":"/l"})"},
                                         RefusalRow{"NoCode", R"({"ok":true})"}, RefusalRow{"NoJSON", "downgrade"},
                                         RefusalRow{"NoReplyAndNothingLogged", ""}),
                         [](const auto& row) { return row.param.name; });

TEST(RefusalReasonTest, AClientThatWasRejectedHasNoReplyAndALineInTheLog) {
  EXPECT_THAT(
      reasonFor("", "rejected unauthorized client pid=5"),
      Optional(std::string("halvo-app: Because. Really. The helper's log: rejected unauthorized client pid=5")));
}

TEST(RefusalReasonTest, TheLogSaysWhatTheReplyDoesNot) {
  EXPECT_THAT(
      reasonFor("false", "refused to remove non-Halvo path /x"),
      Optional(std::string("halvo-app: Because. Really. The helper's log: refused to remove non-Halvo path /x")));
}

TEST(RefusalReasonTest, AnotherClientsLineMakesNoRefusalOfAReply) {
  EXPECT_EQ(reasonFor("true", "refused to remove non-Halvo path /x"), std::nullopt);
}

}  // namespace
}  // namespace halvo::sim
