#include "transport/mac/PendingCalls.h"

#include <utility>

namespace halvo {

PendingCall::PendingCall(ServiceClient::FailureHandler onFailure) : onFailure_(std::move(onFailure)) {}

void PendingCall::settle(const std::function<void()>& answer) {
  const std::lock_guard lock(delivery_);
  if (std::exchange(settled_, true)) return;
  answer();
}

void PendingCall::fail(const ServiceFailure& failure) {
  settle([&] {
    if (onFailure_) onFailure_(failure);
  });
}

void PendingCalls::add(const std::shared_ptr<PendingCall>& call) {
  const std::lock_guard lock(mutex_);
  std::erase_if(calls_, [](const std::weak_ptr<PendingCall>& known) { return known.expired(); });
  calls_.push_back(call);
}

void PendingCalls::failAll(const ServiceFailure& failure) {
  std::vector<std::weak_ptr<PendingCall>> calls;
  {
    const std::lock_guard lock(mutex_);
    calls.swap(calls_);
  }
  // Without the lock: a failure handler may send another message.
  for (const auto& call : calls) {
    if (const auto waiting = call.lock()) waiting->fail(failure);
  }
}

}  // namespace halvo
