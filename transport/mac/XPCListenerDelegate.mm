#import "transport/mac/XPCListenerDelegate.h"

#include <utility>

#import "transport/mac/UnavailableInitializer.h"
#import "transport/mac/XPCIncomingConnection.h"

@implementation HalvoListenerDelegate {
  std::shared_ptr<halvo::ServiceListenerDelegate> _delegate;
}

- (instancetype)initWithDelegate:(std::shared_ptr<halvo::ServiceListenerDelegate>)delegate {
  self = [super init];
  if (self != nil) _delegate = std::move(delegate);
  return self;
}

- (instancetype)init {
  halvo::stopAtUnavailableInitializer([self class]);
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection {
  if (newConnection == nil) return NO;
  @autoreleasepool {
    halvo::XPCIncomingConnection incoming(newConnection);
    return _delegate->shouldAcceptNewConnection(incoming) ? YES : NO;
  }
}

@end
