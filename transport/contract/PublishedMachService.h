// A service for a contract test. What stands in for launchd differs between platforms, so each brings its own
// implementation of this class.
#pragma once

#include <memory>

#include "transport/ServiceClient.h"
#include "transport/ServiceListener.h"

namespace halvo {

// One at a time; its listeners and clients must be gone first.
class PublishedMachService {
 public:
  PublishedMachService();
  PublishedMachService(const PublishedMachService&) = delete;
  PublishedMachService& operator=(const PublishedMachService&) = delete;
  ~PublishedMachService();

  // Publishes the service once it is resumed, in place of an earlier one, which must be gone.
  std::unique_ptr<ServiceListener> newListener();

  // Reaches the listener that there is when it connects.
  std::unique_ptr<ServiceClient> newClient();

 private:
  struct State;
  const std::shared_ptr<State> state_;
};

}  // namespace halvo
