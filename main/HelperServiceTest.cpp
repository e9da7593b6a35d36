#include "main/HelperService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "transport/IncomingConnection.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<HelperService>, "a service without a validator could only admit all");

using Recorder = std::shared_ptr<CallRecorder>;

// Accepts one token and notes what it is asked.
class OneTokenValidator final : public ClientValidator {
 public:
  OneTokenValidator(audit_token_t accepted, Recorder recorder) : accepted_(accepted), recorder_(std::move(recorder)) {}

  bool isAuthorized(const audit_token_t& token) const override {
    recorder_->calls.emplace_back("validate");
    seen = token;
    return std::memcmp(&token, &accepted_, sizeof token) == 0;
  }

  mutable audit_token_t seen{};

 private:
  audit_token_t accepted_;
  Recorder recorder_;
};

class RecordedConnection final : public IncomingConnection {
 public:
  RecordedConnection(audit_token_t token, Recorder recorder) : token_(token), recorder_(std::move(recorder)) {}

  audit_token_t auditTokenValue() const override {
    recorder_->calls.emplace_back("token");
    return token_;
  }
  pid_t processIdentifier() const override {
    recorder_->calls.emplace_back("pid");
    return 4711;
  }
  void exportHandler(std::shared_ptr<HalvoHelperProtocol> given) override {
    recorder_->calls.emplace_back("export");
    handler = std::move(given);
  }
  void resume() override { recorder_->calls.emplace_back("resume"); }

  std::shared_ptr<HalvoHelperProtocol> handler;

 private:
  audit_token_t token_;
  Recorder recorder_;
};

constexpr audit_token_t kApplication = {{1, 501, 20, 501, 20, 4711, 7, 0xFFFFFFFF}};
constexpr audit_token_t kStranger = {{1, 501, 20, 501, 20, 4711, 7, 0xFFFFFFFE}};

class HelperServiceTest : public testing::Test {
 protected:
  RecordedConnection connectionOf(audit_token_t token) { return RecordedConnection(token, recorder_); }

  const std::vector<std::string>& calls() const { return recorder_->calls; }

  RecordedSystemLog systemLog_;
  Recorder recorder_ = std::make_shared<CallRecorder>();
  std::shared_ptr<OneTokenValidator> validator_ = std::make_shared<OneTokenValidator>(kApplication, recorder_);
  HelperService service_{validator_, [this] {
                           recorder_->calls.emplace_back("makeHandler");
                           return std::make_shared<HelperHandler>(HelperOperations());
                         }};
};

TEST_F(HelperServiceTest, AdmitsAValidClientInOrderAndReadsItsTokenOnce) {
  RecordedConnection client = connectionOf(kApplication);

  EXPECT_TRUE(service_.shouldAcceptNewConnection(client));

  EXPECT_THAT(calls(), ElementsAre("token", "validate", "makeHandler", "export", "resume"));
  EXPECT_NE(client.handler, nullptr);
}

TEST_F(HelperServiceTest, LogsNothingAboutAnAdmittedClient) {
  RecordedConnection client = connectionOf(kApplication);

  service_.shouldAcceptNewConnection(client);

  EXPECT_THAT(systemLog_.lines(), IsEmpty());
}

TEST_F(HelperServiceTest, NeitherConfiguresNorResumesARefusedConnection) {
  RecordedConnection stranger = connectionOf(kStranger);

  EXPECT_FALSE(service_.shouldAcceptNewConnection(stranger));

  EXPECT_THAT(calls(), ElementsAre("token", "validate", "pid"));
  EXPECT_EQ(stranger.handler, nullptr);
}

TEST_F(HelperServiceTest, LogsARefusedClientByItsProcessNumber) {
  RecordedConnection stranger = connectionOf(kStranger);

  service_.shouldAcceptNewConnection(stranger);

  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: rejected unauthorized client pid=4711"));
}

TEST_F(HelperServiceTest, HandsTheTokenToTheValidatorUnchanged) {
  RecordedConnection stranger = connectionOf(kStranger);

  service_.shouldAcceptNewConnection(stranger);

  EXPECT_THAT(validator_->seen.val, testing::ElementsAreArray(kStranger.val));
}

TEST_F(HelperServiceTest, LeavesTheZeroTokenToTheValidator) {
  RecordedConnection withoutToken = connectionOf(audit_token_t{});

  EXPECT_FALSE(service_.shouldAcceptNewConnection(withoutToken));

  EXPECT_THAT(calls(), ElementsAre("token", "validate", "pid"));
}

TEST_F(HelperServiceTest, AdmitsAValidClientAfterARefusedOne) {
  RecordedConnection stranger = connectionOf(kStranger);
  RecordedConnection client = connectionOf(kApplication);
  service_.shouldAcceptNewConnection(stranger);

  EXPECT_TRUE(service_.shouldAcceptNewConnection(client));

  EXPECT_NE(client.handler, nullptr);
}

TEST_F(HelperServiceTest, RefusesAStrangerAfterAnAdmittedClient) {
  RecordedConnection client = connectionOf(kApplication);
  RecordedConnection stranger = connectionOf(kStranger);
  service_.shouldAcceptNewConnection(client);

  EXPECT_FALSE(service_.shouldAcceptNewConnection(stranger));

  EXPECT_EQ(stranger.handler, nullptr);
}

TEST_F(HelperServiceTest, GivesEveryConnectionAHandlerOfItsOwn) {
  RecordedConnection first = connectionOf(kApplication);
  RecordedConnection second = connectionOf(kApplication);

  service_.shouldAcceptNewConnection(first);
  service_.shouldAcceptNewConnection(second);

  EXPECT_NE(first.handler, second.handler);
}

TEST_F(HelperServiceTest, LeavesTheHandlerToItsConnection) {
  RecordedConnection client = connectionOf(kApplication);
  service_.shouldAcceptNewConnection(client);
  const std::weak_ptr<HalvoHelperProtocol> handler = client.handler;

  client.handler.reset();

  EXPECT_TRUE(handler.expired());
}

}  // namespace
}  // namespace halvo
