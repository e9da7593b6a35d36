// An NSXPC connection during its admission. For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "transport/IncomingConnection.h"

NS_ASSUME_NONNULL_BEGIN

@interface NSXPCConnection (HalvoAuditToken)

// The kernel's token of the peer, read by key because the property is not declared to us. All zero when the key is
// gone or answers with anything but a value of a token's size.
@property(readonly) audit_token_t auditTokenValue;

@end

namespace halvo {

// Configures the connection with the protocol of the helper.
class XPCIncomingConnection final : public IncomingConnection {
 public:
  explicit XPCIncomingConnection(NSXPCConnection* connection) : connection_(connection) {}

  audit_token_t auditTokenValue() const override;
  pid_t processIdentifier() const override;
  void exportHandler(std::shared_ptr<HalvoHelperProtocol> handler) override;
  void resume() override;

 private:
  NSXPCConnection* const connection_;
};

}  // namespace halvo

NS_ASSUME_NONNULL_END
