#include "client/Conversation.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <utility>

namespace halvo {
namespace {

using std::chrono::milliseconds;

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

// What is left of a time that may have no limit.
class TimeLeft {
 public:
  explicit TimeLeft(std::optional<milliseconds> limit) {
    if (limit) end_ = Clock::now() + *limit;
  }

  // As long as that, or what is left when that is less.
  [[nodiscard]] milliseconds of(milliseconds wanted) const { return std::min(wanted, untilEnd()); }
  [[nodiscard]] bool isNone() const { return untilEnd() <= milliseconds::zero(); }

 private:
  using Clock = std::chrono::steady_clock;

  // Rounded up: what has not passed whole is not over.
  [[nodiscard]] milliseconds untilEnd() const { return std::chrono::ceil<milliseconds>(end_ - Clock::now()); }

  Clock::time_point end_ = Clock::time_point::max();  // without a limit, never
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

  const TimeLeft left(limit_);
  bool waited = false;
  for (auto wait = pace_.patience; outcome.wait_for(left.of(wait)) != std::future_status::ready;
       wait = pace_.betweenLooks) {
    if (left.isNone()) return TimedOut{};
    waited = true;
    whileWaiting();
  }
  if (waited) whileWaiting();
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
  if (std::holds_alternative<std::string>(outcome)) return NoReply{};
  return outcome;
}

}  // namespace halvo
