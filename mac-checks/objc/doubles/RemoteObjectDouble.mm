#import "mac-checks/objc/doubles/XPCDouble.h"

#include <utility>

using halvo::sim::DoubleMessage;

namespace {

// The way back of one message. Letting go of it unanswered is an error on the client's side, answering twice an
// exception on the helper's.
class ReplyPath {
 public:
  ReplyPath(NSXPCConnection* client, std::shared_ptr<DoubleMessage> message)
      : client_(client), message_(std::move(message)) {}
  ReplyPath(const ReplyPath&) = delete;
  ReplyPath& operator=(const ReplyPath&) = delete;

  ~ReplyPath() {
    if (used_) return;
    [client_ async:[message = message_] {
      message->fail([NSError errorWithDomain:NSCocoaErrorDomain code:NSXPCConnectionReplyInvalid userInfo:nil]);
    }];
  }

  void answer(std::function<void()> deliver) {
    {
      const std::lock_guard lock(mutex_);
      if (std::exchange(used_, true)) [NSException raise:NSInternalInconsistencyException format:@"replied twice"];
    }
    [client_ async:[message = message_, deliver = std::move(deliver)] { message->reply(deliver); }];
  }

 private:
  NSXPCConnection* const client_;
  const std::shared_ptr<DoubleMessage> message_;
  std::mutex mutex_;
  bool used_ = false;  // guarded by mutex_
};

// Sends the message of that selector with these arguments, whose answer goes to `reply`.
template <typename Value, typename... Arguments>
void sendThrough(NSXPCConnection* connection, void (^errorHandler)(NSError*), SEL selector, void (^reply)(Value),
                 Arguments... arguments) {
  using Method = void (*)(id, SEL, Arguments..., void (^)(Value));
  using AnyFunction = void (*)();  // what a cast between unlike function types has to go through
  const auto message = std::make_shared<DoubleMessage>(errorHandler);
  const auto path = std::make_shared<ReplyPath>(connection, message);
  void (^const answer)(Value) = ^(Value value) {
    path->answer([reply, value] { reply(value); });
  };
  [connection sendMessage:message
                  through:[=](id<HalvoHelperProtocol> handler) {
                    const auto method = reinterpret_cast<AnyFunction>([(id)handler methodForSelector:selector]);
                    reinterpret_cast<Method>(method)(handler, selector, arguments..., answer);
                  }];
}

}  // namespace

@implementation HalvoDoubleRemoteObject {
  NSXPCConnection* _connection;
  void (^_errorHandler)(NSError*);
}

- (instancetype)initWithConnection:(NSXPCConnection*)connection errorHandler:(void (^)(NSError*))errorHandler {
  self = [super init];
  if (self != nil) {
    _connection = connection;
    _errorHandler = errorHandler;
  }
  return self;
}

- (void)pingWithReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply);
}

- (void)enumerateActiveGuiDomainsWithReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply);
}

- (void)prepareForRemovalWithAcceptAudioInterruption:(bool)accept withReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, accept);
}

- (void)removeAppBundleWithPath:(NSString*)path withReply:(void (^)(bool))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, path);
}

- (void)finalizeRemoval {
  const auto message = std::make_shared<DoubleMessage>(_errorHandler);
  [_connection sendMessage:message
                   through:[message](id<HalvoHelperProtocol> handler) {
                     message->reply([] {});  // one way: once it has arrived, nothing more is heard of it
                     [handler finalizeRemoval];
                   }];
}

- (void)installSystemPkgWithPkgPath:(NSString*)pkgPath
                       manifestJSON:(NSString*)manifest
            acceptAudioInterruption:(bool)accept
                          withReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, pkgPath, manifest, accept);
}

- (void)prepareForRemovalWithAuthorization:(NSData*)authorization
                   acceptAudioInterruption:(bool)accept
                                 withReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, authorization, accept);
}

- (void)removeAppBundleWithAuthorization:(NSData*)authorization path:(NSString*)path withReply:(void (^)(bool))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, authorization, path);
}

- (void)finalizeRemovalWithAuthorization:(NSData*)authorization withReply:(void (^)(bool))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, authorization);
}

- (void)installSystemPkgWithAuthorization:(NSData*)authorization
                                  pkgPath:(NSString*)pkgPath
                             manifestJSON:(NSString*)manifest
                  acceptAudioInterruption:(bool)accept
                                withReply:(void (^)(NSString*))reply {
  sendThrough(_connection, _errorHandler, _cmd, reply, authorization, pkgPath, manifest, accept);
}

@end
