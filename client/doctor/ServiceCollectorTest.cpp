#include "client/doctor/ServiceCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/testing/ScriptedHelper.h"
#include "platform/contract/Repeated.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

struct ReplyRow {
  const char* name;
  const char* reply;
};

TEST(UsersInTest, AreReadInTheirOrder) {
  EXPECT_THAT(usersIn(R"({"uids":[502,501]})"), Optional(ElementsAre(502, 501)));
  EXPECT_THAT(usersIn(R"({"uids":[]})"), Optional(IsEmpty()));
}

TEST(UsersInTest, AListThatIsTooLongIsNone) {
  const std::string thousand = "501" + repeated(",501", 999);

  EXPECT_THAT(usersIn("{\"uids\":[" + thousand + "]}"), Optional(testing::SizeIs(1000)));
  EXPECT_EQ(usersIn("{\"uids\":[" + thousand + ",502]}"), std::nullopt);
}

class ReplyWithoutUsers : public testing::TestWithParam<ReplyRow> {};

TEST_P(ReplyWithoutUsers, GivesNothing) { EXPECT_EQ(usersIn(GetParam().reply), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Table, ReplyWithoutUsers,
                         testing::Values(ReplyRow{"Empty", ""}, ReplyRow{"Open", R"({"uids":[501)"},
                                         ReplyRow{"Word", R"({"uids":[root]})"},
                                         ReplyRow{"Other", R"({"users":[501]})"},
                                         ReplyRow{"OtherOfTheSameLength", R"({"gids":[501]})"},
                                         ReplyRow{"TooLarge", R"({"uids":[99999999999999999999]})"}),
                         [](const auto& row) { return std::string(row.param.name); });

class ServiceCollectorTest : public testing::Test {
 protected:
  ServiceCollectorTest() { helper->textReply = R"({"uids":[501]})"; }

  Service collected() {
    Conversation conversation([this] { return std::make_unique<ScriptedClient>(helper); });
    conversation.waitAtMost(std::chrono::milliseconds(1));
    return collectService(conversation);
  }

  std::shared_ptr<ScriptedHelper> helper = std::make_shared<ScriptedHelper>();
};

TEST_F(ServiceCollectorTest, AHelperIsAskedForVersionAndUsers) {
  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::answers);
  EXPECT_EQ(service.helperVersion, 6);
  EXPECT_EQ(service.buildABI, 1);
  EXPECT_THAT(service.graphicalUsers, Optional(ElementsAre(501)));
  EXPECT_THAT(helper->requests, ElementsAre("ping", "users"));
}

TEST_F(ServiceCollectorTest, AHelperThatCannotBeReachedIsAskedNothingElse) {
  helper->pingFailure = ServiceFailure{ServiceFailure::Kind::unreachable, "no such service"};

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::unreachable);
  EXPECT_EQ(service.explanation, "no such service");
  EXPECT_THAT(helper->requests, ElementsAre("ping", "ping"));
}

TEST_F(ServiceCollectorTest, OfALongFailureAHundredBytesAreShown) {
  helper->pingFailure = ServiceFailure{ServiceFailure::Kind::unreachable, std::string(5000, 'x')};

  EXPECT_EQ(collected().explanation, std::string(100, 'x') + "...");
}

TEST_F(ServiceCollectorTest, AHelperThatDoesNotReplyIsSilentAndAskedNothingElse) {
  helper->pingsAreAnswered = false;

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::silent);
  EXPECT_EQ(service.explanation, "");
  EXPECT_THAT(helper->requests, ElementsAre("ping"));
}

TEST_F(ServiceCollectorTest, AReplyWithoutVersionIsStrangeAndShownInPart) {
  helper->pingReply = std::string(5000, 'x');

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::strange);
  EXPECT_EQ(service.explanation, std::string(100, 'x') + "...");
}

class ReplyWithoutVersion : public ServiceCollectorTest, public testing::WithParamInterface<ReplyRow> {};

TEST_P(ReplyWithoutVersion, IsStrange) {
  helper->pingReply = GetParam().reply;

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::strange);
  EXPECT_EQ(service.explanation, GetParam().reply);
  EXPECT_THAT(helper->requests, ElementsAre("ping"));
}

INSTANTIATE_TEST_SUITE_P(Table, ReplyWithoutVersion,
                         testing::Values(ReplyRow{"NoJSON", "6"}, ReplyRow{"Without", R"({"ok":true,"build_abi":1})"},
                                         ReplyRow{"Text", R"({"ok":true,"helper_version":"6"})"}),
                         [](const auto& row) { return std::string(row.param.name); });

class ReplyWithoutBuild : public ServiceCollectorTest, public testing::WithParamInterface<ReplyRow> {};

TEST_P(ReplyWithoutBuild, LeavesItUnknown) {
  helper->pingReply = GetParam().reply;

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::answers);
  EXPECT_EQ(service.helperVersion, 6);
  EXPECT_EQ(service.buildABI, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Table, ReplyWithoutBuild,
                         testing::Values(ReplyRow{"Without", R"({"ok":true,"helper_version":6})"},
                                         ReplyRow{"Text", R"({"helper_version":6,"build_abi":"1"})"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ServiceCollectorTest, UsersMayStayUnknown) {
  helper->answersAtOnce = false;

  const Service service = collected();

  EXPECT_EQ(service.state, ServiceState::answers);
  EXPECT_EQ(service.graphicalUsers, std::nullopt);
}

}  // namespace
}  // namespace halvo
