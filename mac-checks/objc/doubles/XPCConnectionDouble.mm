#include <mach/message.h>
#import <objc/runtime.h>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "mac-checks/objc/doubles/SerialQueue.h"
#import "mac-checks/objc/doubles/XPCDouble.h"
#import "mac-checks/objc/doubles/XPCDoubleWorld.h"

using namespace halvo::sim;

@implementation NSXPCConnection {
  std::string _name;
  BOOL _byEndpoint;
  id _token;
  pid_t _pid;
  SerialQueue _queue;
  __weak NSXPCConnection* _client;  // of the helper's end
  std::atomic<int> _tokenReads;
  std::atomic<int> _resumeCount;
  std::mutex _mutex;  // guards everything below
  BOOL _invalid;
  BOOL _ended;                  // invalidate was called; what follows from it comes later, on the queue
  NSXPCConnection* _helperEnd;  // of the client's end, once connected
  std::vector<std::shared_ptr<DoubleMessage>> _open;
}

- (instancetype)initWithMachServiceName:(NSString*)name options:(NSXPCConnectionOptions)options {
  self = [super init];
  if (self != nil) {
    _name = name.UTF8String;
    _options = options;
  }
  return self;
}

- (instancetype)initWithListenerEndpoint:(NSXPCListenerEndpoint*)endpoint {
  self = [super init];
  if (self != nil) {
    _name = endpoint.listenerName.UTF8String;
    _byEndpoint = YES;
  }
  return self;
}

- (instancetype)initWithToken:(id)token processIdentifier:(pid_t)pid {
  self = [super init];
  if (self != nil) {
    _token = token;
    _pid = pid;
  }
  return self;
}

- (pid_t)processIdentifier {
  return _pid;
}

- (audit_token_t)auditToken {
  return {};
}

- (BOOL)respondsToSelector:(SEL)selector {
  if (self.withoutTokenKey && selector == @selector(auditToken)) return NO;
  return [super respondsToSelector:selector];
}

- (id)valueForKey:(NSString*)key {
  if (![key isEqualToString:@"auditToken"]) return [super valueForKey:key];
  if (self.withoutTokenKey) [NSException raise:@"NSUnknownKeyException" format:@"no such key"];
  ++_tokenReads;
  return _token;
}

- (int)tokenReads {
  return _tokenReads;
}

- (int)resumeCount {
  return _resumeCount;
}

- (void)resume {
  ++_resumeCount;
}

- (id)remoteObjectProxyWithErrorHandler:(void (^)(NSError*))handler {
  return [[HalvoDoubleRemoteObject alloc] initWithConnection:self errorHandler:handler];
}

- (void)async:(std::function<void()>)work {
  _queue.async(std::move(work));
}

- (void)setClient:(NSXPCConnection*)client {
  _client = client;
}

- (void)sendMessage:(const std::shared_ptr<DoubleMessage>&)message through:(const SendToHandler&)send {
  [self async:[self, message, send] {
    if (NSError* const scripted = takeScriptedFailure()) return message->fail(scripted);
    NSXPCConnection* const helperEnd = [self connectFor:message];
    if (helperEnd == nil) return;
    NSXPCConnection* const client = self;
    [helperEnd async:[helperEnd, client, message, send] {
      const id handler = helperEnd.exportedObject;
      const bool sameProtocol =
          protocol_isEqual(helperEnd.exportedInterface.protocol, client.remoteObjectInterface.protocol) != NO;
      if (handler != nil && sameProtocol) return send(handler);
      [client async:[message] { message->fail(xpcError(NSXPCConnectionInterrupted)); }];
    }];
  }];
}

// The helper's end, connecting first if there is none; nil after `message` has failed. On the client's queue.
- (NSXPCConnection*)connectFor:(const std::shared_ptr<DoubleMessage>&)message {
  {
    const std::lock_guard lock(_mutex);
    std::erase_if(_open, [](const auto& known) { return known->isDone(); });
    _open.push_back(message);
    if (_helperEnd != nil) return _helperEnd;
  }
  NSXPCListener* const listener = [self mayConnect] ? listenerNamed(_name) : nil;
  if (listener == nil) {
    [self becomeInvalid];
    message->fail(xpcError(NSXPCConnectionInvalid));
    return nil;
  }
  NSXPCConnection* const helperEnd = _byEndpoint ? newHelperEndOfThisProcess() : newHelperEnd();
  [helperEnd setClient:self];
  if (![listener takeClient:helperEnd]) {
    [self lose];
    return nil;
  }
  {
    const std::lock_guard lock(_mutex);
    if (!_ended) return _helperEnd = helperEnd;
  }
  [listener dropClient:helperEnd];
  [helperEnd endExport];
  return nil;
}

- (BOOL)mayConnect {
  const std::lock_guard lock(_mutex);
  // The named services here are the system's: without the option a connection looks in its user's session only.
  const bool findsTheListener = _byEndpoint || (_options & NSXPCConnectionPrivileged) != 0;
  return findsTheListener && !_invalid && !_ended && _resumeCount > 0;
}

// The connection is interrupted: what waits fails, the next message connects anew. On the client's queue.
- (void)lose {
  [self failOpenMessages:NSXPCConnectionInterrupted];
  if (self.interruptionHandler != nil) self.interruptionHandler();
}

- (void)becomeInvalid {
  {
    const std::lock_guard lock(_mutex);
    if (std::exchange(_invalid, YES)) return;
  }
  [self failOpenMessages:NSXPCConnectionInvalid];
  if (self.invalidationHandler != nil) self.invalidationHandler();
  self.interruptionHandler = nil;
  self.invalidationHandler = nil;
}

- (void)failOpenMessages:(NSInteger)code {
  std::vector<std::shared_ptr<DoubleMessage>> open;
  {
    const std::lock_guard lock(_mutex);
    open.swap(_open);
    _helperEnd = nil;
  }
  for (const auto& message : open) message->fail(xpcError(code));
}

- (void)invalidate {
  NSXPCConnection* helperEnd = nil;
  {
    const std::lock_guard lock(_mutex);
    _ended = YES;
    helperEnd = _helperEnd;
  }
  [listenerNamed(_name) dropClient:helperEnd];
  [helperEnd endExport];
  NSXPCConnection* const client = self;
  [self async:[client] { [client becomeInvalid]; }];
}

- (void)endByInterruption {
  [self endExport];
  NSXPCConnection* const client = _client;
  [client async:[client] { [client lose]; }];
}

- (void)endByInvalidation {
  [self endExport];
  NSXPCConnection* const client = _client;
  std::promise<void> done;
  [client async:[client, &done] {
    [client becomeInvalid];
    done.set_value();
  }];
  done.get_future().wait();
}

- (void)endExport {
  NSXPCConnection* const helperEnd = self;
  [self async:[helperEnd] { helperEnd.exportedObject = nil; }];
}

@end
