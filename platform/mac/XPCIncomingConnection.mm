#import "platform/mac/XPCIncomingConnection.h"

#include <cstring>
#include <utility>

#import "platform/mac/ExportedHandler.h"

@implementation NSXPCConnection (HalvoAuditToken)

- (audit_token_t)auditTokenValue {
  audit_token_t token = {};
  NSString* const key = @"auditToken";
  // Asking for a key that is not there throws, and a system that has dropped it must end in a refusal.
  if (![self respondsToSelector:NSSelectorFromString(key)]) return token;
  const id value = [self valueForKey:key];
  if (![value isKindOfClass:[NSValue class]]) return token;
  auto* const boxed = static_cast<NSValue*>(value);
  // A value of another type has another size, which getValue:size: answers with an exception.
  if (std::strcmp(boxed.objCType, @encode(audit_token_t)) != 0) return token;
  [boxed getValue:&token size:sizeof(token)];
  return token;
}

@end

namespace halvo {

audit_token_t XPCIncomingConnection::auditTokenValue() const {
  @autoreleasepool {
    return connection_.auditTokenValue;
  }
}

pid_t XPCIncomingConnection::processIdentifier() const { return connection_.processIdentifier; }

void XPCIncomingConnection::exportHandler(std::shared_ptr<HalvoHelperProtocol> handler) {
  @autoreleasepool {
    connection_.exportedInterface = [NSXPCInterface interfaceWithProtocol:@protocol(HalvoHelperProtocol)];
    connection_.exportedObject = [[HalvoExportedHandler alloc] initWithHandler:std::move(handler)];
  }
}

void XPCIncomingConnection::resume() { [connection_ resume]; }

}  // namespace halvo
