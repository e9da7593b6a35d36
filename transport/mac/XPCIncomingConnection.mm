#import "transport/mac/XPCIncomingConnection.h"

#include <utility>

#import "transport/mac/ExportedHandler.h"

namespace {

// The bytes that a value holds; 0 for a type that the system itself cannot read, which it answers with an exception.
NSUInteger sizeOfValue(NSValue* value) {
  NSUInteger size = 0;
  try {
    NSGetSizeAndAlignment(value.objCType, &size, nullptr);
  } catch (...) {
    return 0;
  }
  return size;
}

}  // namespace

@implementation NSXPCConnection (HalvoAuditToken)

- (audit_token_t)auditTokenValue {
  audit_token_t token = {};
  NSString* const key = @"auditToken";
  // Asking for a key that is not there throws, and a system that has dropped it must end in a refusal.
  if (![self respondsToSelector:NSSelectorFromString(key)]) return token;
  const id value = [self valueForKey:key];
  if (![value isKindOfClass:[NSValue class]]) return token;
  auto* const boxed = static_cast<NSValue*>(value);
  // How the type is spelled is the system's affair: one that names the struct would otherwise shut everybody out. The
  // size is not: getValue:size: answers another one with an exception.
  if (sizeOfValue(boxed) != sizeof(token)) return token;
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
