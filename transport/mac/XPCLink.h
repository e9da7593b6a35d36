// One end of a connection to the helper, made anew when it was lost. For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <mutex>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "transport/ServiceClient.h"
#import "transport/mac/HalvoHelperXPCProtocol.h"
#include "transport/mac/PendingCalls.h"

NS_ASSUME_NONNULL_BEGIN

namespace halvo {

class XPCLink;

// Makes a connection to the service, not resumed yet. Does not block.
using XPCConnector = std::function<NSXPCConnection*()>;

// One message about to be sent: whom to send it to, and the block that takes its reply. `remote` is nil when there is
// nobody; the call has then failed already.
struct OutgoingMessage {
  id<HalvoHelperProtocol> _Nullable remote;
  std::shared_ptr<XPCLink> link;
  std::shared_ptr<PendingCall> call;

  void (^textReply(const TextReply& reply) const)(NSString*);
  void (^boolReply(const BoolReply& reply) const)(bool);
};

// Any thread.
class XPCLink final : public std::enable_shared_from_this<XPCLink> {
 public:
  explicit XPCLink(XPCConnector connect) : connect_(std::move(connect)) {}

  OutgoingMessage newMessage(const ServiceClient::FailureHandler& onFailure);

  // Nobody waits for a message without reply: it fails only when it cannot be sent, not when the link is closed.
  OutgoingMessage newOneWayMessage(const ServiceClient::FailureHandler& onFailure);

  // The helper has answered: from now on its end is an interruption, not a refusal.
  void noteAnswer();

  // Ends the connection and reports every message that waits as failed. Nothing can be sent afterwards.
  void close();

 private:
  OutgoingMessage messageFor(std::shared_ptr<PendingCall> call);
  NSXPCConnection* _Nullable connectionLocked();
  bool wasAnswered();
  void forget(NSXPCConnection* _Nullable lost);

  const XPCConnector connect_;
  PendingCalls pending_;
  std::mutex mutex_;  // guards everything below
  NSXPCConnection* _Nullable connection_ = nil;
  bool answered_ = false;
  bool closed_ = false;
};

}  // namespace halvo

NS_ASSUME_NONNULL_END
