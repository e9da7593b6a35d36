#include "client/Conversation.h"

#include <atomic>
#include <future>
#include <utility>

namespace halvo {
namespace {

// Where the first of several possible answers goes. A message without reply and the one behind it may both fail.
class FirstAnswer {
 public:
  void give(Outcome outcome) {
    if (!given_.exchange(true)) promise_.set_value(std::move(outcome));
  }
  std::future<Outcome> future() { return promise_.get_future(); }

 private:
  std::promise<Outcome> promise_;
  std::atomic<bool> given_ = false;
};

}  // namespace

Conversation::Conversation(Connect connect, const Pace& pace)
    : connect_(std::move(connect)), client_(connect_()), pace_(pace) {}

Outcome Conversation::ask(const Request& request, const std::function<void()>& whileWaiting) {
  const auto answer = std::make_shared<FirstAnswer>();
  std::future<Outcome> outcome = answer->future();
  const auto helper = client_->proxy([answer](const ServiceFailure& failure) { answer->give(failure); });
  request(
      *helper, [answer](const std::string& reply) { answer->give(reply); },
      [answer](bool reply) { answer->give(reply); });

  if (outcome.wait_for(pace_.patience) != std::future_status::ready) {
    do {
      whileWaiting();
    } while (outcome.wait_for(pace_.betweenLooks) != std::future_status::ready);
    whileWaiting();
  }
  return outcome.get();
}

Outcome Conversation::askRepeatably(const Request& request) {
  Outcome outcome = ask(request);
  const auto* failure = std::get_if<ServiceFailure>(&outcome);
  // A connection that the exit of the helper ends before it is taken looks like that of a client that is refused.
  if (failure == nullptr || failure->kind == ServiceFailure::Kind::rejected) return outcome;
  client_ = connect_();
  return ask(request);
}

Outcome Conversation::tell(const std::function<void(HalvoHelperProtocol& helper)>& message) {
  // The messages of a connection are taken in their order: the answer to the second says that the first has arrived.
  Outcome outcome = ask([&](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply&) {
    message(helper);
    helper.ping(text);
  });
  if (std::holds_alternative<ServiceFailure>(outcome)) return outcome;
  return NoReply{};
}

}  // namespace halvo
