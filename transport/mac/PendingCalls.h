// The messages of a client that still wait for their answer, so that each gets exactly one, also when the client ends.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "transport/ServiceClient.h"

namespace halvo {

// One message. A reply, a failure reported by the platform and the end of the client may come at the same time from
// different threads: the first one counts.
class PendingCall {
 public:
  explicit PendingCall(ServiceClient::FailureHandler onFailure);

  // Runs `answer` if this is the first answer.
  void settle(const std::function<void()>& answer);

  // Reports the failure if this is the first answer. In any case returns only when the answer that counted has been
  // delivered, unless it is being delivered by this very thread.
  void fail(const ServiceFailure& failure);

 private:
  const ServiceClient::FailureHandler onFailure_;
  std::recursive_mutex delivery_;  // held while the answer is being delivered; guards settled_
  bool settled_ = false;
};

// Any thread.
class PendingCalls {
 public:
  // The call is forgotten when its last owner lets go of it.
  void add(const std::shared_ptr<PendingCall>& call);

  // No callback runs any more when this returns, except the one that called it.
  void failAll(const ServiceFailure& failure);

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<PendingCall>> calls_;  // guarded by mutex_
};

}  // namespace halvo
