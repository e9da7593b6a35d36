#import "transport/mac/ExportedHandler.h"

#include <atomic>
#include <utility>

#import "platform/mac/FoundationText.h"
#import "transport/mac/UnavailableInitializer.h"

namespace halvo {
namespace {

// A second call of a reply block raises, which would end the connection: only the first reply gets through.
using ReplyGate = std::shared_ptr<std::atomic_flag>;

bool isFirst(const ReplyGate& gate) { return !gate->test_and_set(); }

TextReply textReply(void (^block)(NSString*)) {
  return [block, gate = std::make_shared<std::atomic_flag>()](const std::string& json) {
    if (block != nil && isFirst(gate)) block(foundationText(json));
  };
}

BoolReply boolReply(void (^block)(bool)) {
  return [block, gate = std::make_shared<std::atomic_flag>()](bool succeeded) {
    if (block != nil && isFirst(gate)) block(succeeded);
  };
}

}  // namespace
}  // namespace halvo

// Every method drains its own pool: a connection's queue drains its pool only now and then, and a request may bring
// megabytes.
@implementation HalvoExportedHandler {
  std::shared_ptr<halvo::HalvoHelperProtocol> _handler;
}

- (instancetype)initWithHandler:(std::shared_ptr<halvo::HalvoHelperProtocol>)handler {
  self = [super init];
  if (self != nil) _handler = std::move(handler);
  return self;
}

- (instancetype)init {
  halvo::stopAtUnavailableInitializer([self class]);
}

- (void)pingWithReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->ping(halvo::textReply(reply));
  }
}

- (void)enumerateActiveGuiDomainsWithReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->enumerateActiveGuiDomains(halvo::textReply(reply));
  }
}

- (void)prepareForRemovalWithAcceptAudioInterruption:(bool)acceptAudioInterruption
                                           withReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->prepareForRemoval(acceptAudioInterruption, halvo::textReply(reply));
  }
}

- (void)removeAppBundleWithPath:(NSString*)path withReply:(void (^)(bool))reply {
  @autoreleasepool {
    _handler->removeAppBundle(halvo::textFromFoundation(path), halvo::boolReply(reply));
  }
}

- (void)finalizeRemoval {
  @autoreleasepool {
    _handler->finalizeRemoval();
  }
}

- (void)installSystemPkgWithPkgPath:(NSString*)pkgPath
                       manifestJSON:(NSString*)manifestJSON
            acceptAudioInterruption:(bool)acceptAudioInterruption
                          withReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->installSystemPkg(halvo::textFromFoundation(pkgPath), halvo::textFromFoundation(manifestJSON),
                               acceptAudioInterruption, halvo::textReply(reply));
  }
}

- (void)prepareForRemovalWithAuthorization:(NSData*)authorization
                   acceptAudioInterruption:(bool)acceptAudioInterruption
                                 withReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->prepareForRemoval(halvo::bytesFromFoundation(authorization), acceptAudioInterruption,
                                halvo::textReply(reply));
  }
}

- (void)removeAppBundleWithAuthorization:(NSData*)authorization path:(NSString*)path withReply:(void (^)(bool))reply {
  @autoreleasepool {
    _handler->removeAppBundle(halvo::bytesFromFoundation(authorization), halvo::textFromFoundation(path),
                              halvo::boolReply(reply));
  }
}

- (void)finalizeRemovalWithAuthorization:(NSData*)authorization withReply:(void (^)(bool))reply {
  @autoreleasepool {
    _handler->finalizeRemoval(halvo::bytesFromFoundation(authorization), halvo::boolReply(reply));
  }
}

- (void)installSystemPkgWithAuthorization:(NSData*)authorization
                                  pkgPath:(NSString*)pkgPath
                             manifestJSON:(NSString*)manifestJSON
                  acceptAudioInterruption:(bool)acceptAudioInterruption
                                withReply:(void (^)(NSString*))reply {
  @autoreleasepool {
    _handler->installSystemPkg(halvo::bytesFromFoundation(authorization), halvo::textFromFoundation(pkgPath),
                               halvo::textFromFoundation(manifestJSON), acceptAudioInterruption,
                               halvo::textReply(reply));
  }
}

@end
