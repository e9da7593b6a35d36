// A Mach service proper can only be published by a job of launchd. A listener without a name offers the same to whoever
// is handed its endpoint.
#include "transport/contract/PublishedMachService.h"

#import <Foundation/Foundation.h>

#include <mutex>

#import "transport/mac/XPCServiceClient.h"
#import "transport/mac/XPCServiceListener.h"

namespace halvo {

struct PublishedMachService::State {
  std::mutex mutex;
  NSXPCListenerEndpoint* endpoint = nil;  // of the newest listener; guarded by mutex
};

PublishedMachService::PublishedMachService() : state_(std::make_shared<State>()) {}
PublishedMachService::~PublishedMachService() = default;

std::unique_ptr<ServiceListener> PublishedMachService::newListener() {
  @autoreleasepool {
    NSXPCListener* const listener = [NSXPCListener anonymousListener];
    const std::lock_guard lock(state_->mutex);
    state_->endpoint = listener.endpoint;
    return serviceListenerOver(listener);
  }
}

std::unique_ptr<ServiceClient> PublishedMachService::newClient() {
  return serviceClientConnectingBy([state = state_] {
    const std::lock_guard lock(state->mutex);
    return [[NSXPCConnection alloc] initWithListenerEndpoint:state->endpoint];
  });
}

}  // namespace halvo
