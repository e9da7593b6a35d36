// What tests do to the XPC doubles from the side of the system, and how the doubles talk to each other.
#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#import "transport/mac/HalvoHelperXPCProtocol.h"

namespace halvo::sim {

// The token object and process number that clients inside this process connect with from now on.
void setDoubleClientIdentity(id token, pid_t pid);

// The helper's process ends: every open connection to the service is interrupted, its exported object let go of.
void endDoubleService(const std::string& machServiceName);

// The system gives up every open connection to the service: their clients' ends are invalid when this returns.
void giveUpDoubleConnections(const std::string& machServiceName);

// The next message of any client fails before it is sent.
void failNextDoubleMessage(NSError* error);

// The clients that the service's listener serves.
std::size_t openDoubleConnections(const std::string& machServiceName);

// One message on its way: answered once, by a reply or by an error; whatever comes later is dropped.
class DoubleMessage {
 public:
  explicit DoubleMessage(void (^errorHandler)(NSError*)) : errorHandler_(errorHandler) {}

  // Call these on the client's queue.
  void reply(const std::function<void()>& deliver);
  void fail(NSError* error);
  bool isDone();

 private:
  std::mutex mutex_;
  bool done_ = false;
  void (^const errorHandler_)(NSError*);
};

using SendToHandler = std::function<void(id<HalvoHelperProtocol> handler)>;

}  // namespace halvo::sim

@interface HalvoDoubleXPCConnection (DoubleWire)

// Queues the message; `send` runs with the exported object on the queue of the helper's end.
- (void)sendMessage:(const std::shared_ptr<halvo::sim::DoubleMessage>&)message
            through:(const halvo::sim::SendToHandler&)send;

// Runs `work` on the connection's private queue.
- (void)async:(std::function<void()>)work;

@end

// The helper's methods as the client's end of a connection sees them.
@interface HalvoDoubleRemoteObject : NSObject <HalvoHelperProtocol>
- (instancetype)initWithConnection:(NSXPCConnection*)connection errorHandler:(void (^)(NSError*))errorHandler;
@end
