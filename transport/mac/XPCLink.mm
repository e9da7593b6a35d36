#import "transport/mac/XPCLink.h"

#include <utility>

#import "platform/mac/FoundationText.h"

namespace halvo {
namespace {

constexpr const char* kClosed = "The connection was closed.";

ServiceFailure::Kind kindOf(NSError* error, bool answeredBefore) {
  if (![error.domain isEqualToString:NSCocoaErrorDomain]) return ServiceFailure::Kind::rejected;
  switch (error.code) {
    case NSXPCConnectionInterrupted:
      // A refused client sees the same as one whose helper ended. Only who was answered before has been admitted.
      return answeredBefore ? ServiceFailure::Kind::interrupted : ServiceFailure::Kind::unreachable;
    case NSXPCConnectionInvalid:
    case NSXPCConnectionCodeSigningRequirementFailure:
      return ServiceFailure::Kind::unreachable;
    default:
      return ServiceFailure::Kind::rejected;
  }
}

// Whether the connection is of no use any more. The error comes before the connection's own invalidation handler.
bool isFinal(NSError* error) {
  return [error.domain isEqualToString:NSCocoaErrorDomain] &&
         (error.code == NSXPCConnectionInvalid || error.code == NSXPCConnectionCodeSigningRequirementFailure);
}

ServiceFailure failureFrom(NSError* error, bool answeredBefore) {
  const std::string description = textFromFoundation(error.localizedDescription);
  return {kindOf(error, answeredBefore), description.empty() ? "The connection failed." : description};
}

}  // namespace

void (^OutgoingMessage::textReply(const TextReply& reply) const)(NSString*) {
  const auto sender = link;
  const auto pending = call;
  const TextReply answer = reply;
  return ^(NSString* json) {
    sender->noteAnswer();
    pending->settle([&] { answer(textFromFoundation(json)); });
  };
}

void (^OutgoingMessage::boolReply(const BoolReply& reply) const)(bool) {
  const auto sender = link;
  const auto pending = call;
  const BoolReply answer = reply;
  return ^(bool succeeded) {
    sender->noteAnswer();
    pending->settle([&] { answer(succeeded); });
  };
}

OutgoingMessage XPCLink::newMessage(const ServiceClient::FailureHandler& onFailure) {
  auto call = std::make_shared<PendingCall>(onFailure);
  pending_.add(call);
  return messageFor(std::move(call));
}

OutgoingMessage XPCLink::newOneWayMessage(const ServiceClient::FailureHandler& onFailure) {
  return messageFor(std::make_shared<PendingCall>(onFailure));
}

OutgoingMessage XPCLink::messageFor(std::shared_ptr<PendingCall> call) {
  id<HalvoHelperProtocol> remote = nil;
  {
    const std::lock_guard lock(mutex_);
    const bool answeredBefore = answered_;
    const std::weak_ptr<XPCLink> weakLink = weak_from_this();
    NSXPCConnection* const connection = connectionLocked();
    __weak NSXPCConnection* const weakConnection = connection;
    remote = [connection remoteObjectProxyWithErrorHandler:^(NSError* error) {
      @autoreleasepool {
        const auto link = weakLink.lock();
        // Asked twice: by now the connection may have been answered for the first time, or lost that knowledge again.
        const ServiceFailure failure = failureFrom(error, answeredBefore || (link && link->wasAnswered()));
        // Before the failure is told: who tries again at once must not get the dead connection.
        if (link && isFinal(error)) link->forget(weakConnection);
        call->fail(failure);
      }
    }];
  }
  if (remote == nil) call->fail({ServiceFailure::Kind::unreachable, kClosed});
  return {remote, shared_from_this(), std::move(call)};
}

void XPCLink::noteAnswer() {
  const std::lock_guard lock(mutex_);
  answered_ = true;
}

bool XPCLink::wasAnswered() {
  const std::lock_guard lock(mutex_);
  return answered_;
}

void XPCLink::close() {
  NSXPCConnection* open = nil;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    open = std::exchange(connection_, nil);
  }
  // In this order: an invalidated connection would itself fail what waits, and say that it had never worked.
  pending_.failAll({ServiceFailure::Kind::interrupted, kClosed});
  [open invalidate];
}

NSXPCConnection* XPCLink::connectionLocked() {
  if (closed_ || connection_ != nil) return connection_;
  NSXPCConnection* const fresh = connect_();
  fresh.remoteObjectInterface = [NSXPCInterface interfaceWithProtocol:@protocol(HalvoHelperProtocol)];
  // Weak on both sides: the connection keeps its handlers, and they must keep neither the link nor the connection.
  const std::weak_ptr<XPCLink> weakLink = weak_from_this();
  __weak NSXPCConnection* const weakConnection = fresh;
  fresh.interruptionHandler = ^{
    if (const auto link = weakLink.lock()) {
      const std::lock_guard lock(link->mutex_);
      link->answered_ = false;
    }
  };
  fresh.invalidationHandler = ^{
    if (const auto link = weakLink.lock()) link->forget(weakConnection);
  };
  [fresh resume];
  connection_ = fresh;
  return fresh;
}

// An invalid connection stays so: the next message needs another one.
void XPCLink::forget(NSXPCConnection* lost) {
  const std::lock_guard lock(mutex_);
  if (connection_ != lost) return;
  connection_ = nil;
  answered_ = false;
}

}  // namespace halvo
