// What the contract tests of the service ports stand on.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>

#include "transport/ServiceClient.h"
#include "transport/contract/AdmittingDelegate.h"
#include "transport/contract/Answers.h"
#include "transport/contract/PublishedMachService.h"
#include "transport/contract/ScriptedHandler.h"

namespace halvo {

inline constexpr auto kLongEnough = std::chrono::seconds(30);

// A published service whose delegate admits everybody, all connections sharing one handler, and one client.
class ServiceContract : public testing::Test {
 protected:
  ServiceContract() {
    publish([this] { return handler; });
  }

  void publish(AdmittingDelegate::HandlerFactory makeHandler) {
    listener.reset();
    delegate = std::make_shared<AdmittingDelegate>(std::move(makeHandler));
    listener = service.newListener();
    listener->setDelegate(delegate);
    listener->resume();
  }

  std::unique_ptr<ServiceClient> newClient() { return service.newClient(); }

  // Waits until every earlier message of the client has been handled.
  std::string pingAndWait() {
    proxy->ping(answers.text());
    return answers.next();
  }

  PublishedMachService service;
  std::shared_ptr<ScriptedHandler> handler = std::make_shared<ScriptedHandler>();
  std::shared_ptr<AdmittingDelegate> delegate;
  std::unique_ptr<ServiceListener> listener;
  Answers answers;
  std::unique_ptr<ServiceClient> client = newClient();
  std::shared_ptr<HalvoHelperProtocol> proxy = client->proxy(answers.failure());
};

// Holds the handler inside ping() until told to go on.
class HeldPing {
 public:
  explicit HeldPing(ScriptedHandler& handler) {
    handler.onPing = [entered = entered_.text(), released = release_.get_future().share()](const TextReply& reply) {
      entered("entered");
      released.wait_for(kLongEnough);
      reply("released");
    };
  }

  std::string waitUntilEntered() { return entered_.next(); }
  void release() { release_.set_value(); }

 private:
  Answers entered_;
  std::promise<void> release_;
};

}  // namespace halvo
