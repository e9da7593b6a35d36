// Listener and client of the Mac, talking to each other through the doubles.
#pragma once

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

#include "mac-checks/objc/doubles/XPCDouble.h"
#include "mac-checks/objc/tests/TokenValues.h"
#include "transport/IncomingConnection.h"
#include "transport/ServiceClient.h"
#include "transport/ServiceListener.h"
#include "transport/mac/testing/RecordingHandler.h"

namespace halvo::sim {

inline constexpr const char* kService = "com.halvo.test";

class ScriptedDelegate final : public ServiceListenerDelegate {
 public:
  const std::shared_ptr<RecordingHandler> handler = std::make_shared<RecordingHandler>();
  bool admits = true;
  int asked = 0;  // once for each connection
  audit_token_t seen = {};

  bool shouldAcceptNewConnection(IncomingConnection& connection) override {
    ++asked;
    seen = connection.auditTokenValue();
    if (!admits) return false;
    connection.exportHandler(handler);
    connection.resume();
    return true;
  }
};

// Waits for the one answer of one call.
class Answer {
 public:
  TextReply text() {
    return [this](const std::string& json) { promise_.set_value("text " + json); };
  }
  BoolReply boolean() {
    return [this](bool succeeded) { promise_.set_value(succeeded ? "true" : "false"); };
  }
  ServiceClient::FailureHandler failure() {
    return [this](const ServiceFailure& failure) { promise_.set_value(words(failure)); };
  }
  std::string get() { return promise_.get_future().get(); }

 private:
  static std::string words(const ServiceFailure& failure) {
    switch (failure.kind) {
      case ServiceFailure::Kind::unreachable:
        return "unreachable: " + failure.description;
      case ServiceFailure::Kind::interrupted:
        return "interrupted: " + failure.description;
      case ServiceFailure::Kind::rejected:
        return "rejected: " + failure.description;
    }
    return "";
  }

  std::promise<std::string> promise_;
};

class ServiceTest : public testing::Test {
 protected:
  ServiceTest() {
    setDoubleClientIdentity(boxed(kSampleToken), 4711);
    listener_->setDelegate(delegate_);
    listener_->resume();
  }
  ~ServiceTest() override {
    @autoreleasepool {
      client_.reset();
      listener_.reset();
      setDoubleClientIdentity(nil, 0);
    }
  }

  std::string pinged() {
    Answer answer;
    client_->proxy(answer.failure())->ping(answer.text());
    return answer.get();
  }

  std::string removed() {
    Answer answer;
    client_->proxy(answer.failure())->removeAppBundle("/", answer.boolean());
    return answer.get();
  }

  // A new listener takes the place of one that ended.
  void publishAgain() {
    listener_ = ServiceListener::forMachService(kService);
    listener_->setDelegate(delegate_);
    listener_->resume();
  }

  // Returns when the ping is with the handler, which keeps its reply.
  void startUnansweredPing(Answer& answer) {
    delegate_->handler->keepsTextReplies = true;
    client_->proxy(answer.failure())->ping(answer.text());
    ASSERT_EQ(removed(), "true");
  }

  const std::shared_ptr<ScriptedDelegate> delegate_ = std::make_shared<ScriptedDelegate>();
  std::unique_ptr<ServiceListener> listener_ = ServiceListener::forMachService(kService);
  std::unique_ptr<ServiceClient> client_ = ServiceClient::forMachService(kService);
};

}  // namespace halvo::sim
