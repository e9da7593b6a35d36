#import "mac-checks/objc/doubles/XPCDoubleWorld.h"

#include <mach/message.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <map>
#include <mutex>
#include <utility>

#include "mac-checks/objc/doubles/SerialQueue.h"
#import "mac-checks/objc/doubles/XPCDouble.h"

namespace halvo::sim {
namespace {

struct WeakListener {
  __weak NSXPCListener* listener;
};

std::mutex worldMutex;  // guards everything below
std::map<std::string, WeakListener> listeners;
id clientToken;
pid_t clientPid;
NSError* scriptedFailure;

}  // namespace

NSXPCListener* listenerNamed(const std::string& name) {
  const std::lock_guard lock(worldMutex);
  const auto found = listeners.find(name);
  return found == listeners.end() ? nil : found->second.listener;
}

void publishListener(const std::string& name, NSXPCListener* listener) {
  const std::lock_guard lock(worldMutex);
  listeners[name].listener = listener;
}

void withdrawListener(const std::string& name, NSXPCListener* listener) {
  const std::lock_guard lock(worldMutex);
  const auto found = listeners.find(name);
  if (found != listeners.end() && found->second.listener == listener) listeners.erase(found);
}

NSError* xpcError(NSInteger code) {
  NSString* const text = [NSString stringWithFormat:@"XPC error %d", static_cast<int>(code)];
  return [NSError errorWithDomain:NSCocoaErrorDomain code:code userInfo:@{NSLocalizedDescriptionKey : text}];
}

NSError* takeScriptedFailure() {
  const std::lock_guard lock(worldMutex);
  return std::exchange(scriptedFailure, nil);
}

NSXPCConnection* newHelperEnd() {
  const std::lock_guard lock(worldMutex);
  return [[NSXPCConnection alloc] initWithToken:clientToken processIdentifier:clientPid];
}

NSXPCConnection* newHelperEndOfThisProcess() {
  constexpr unsigned kSomePidVersion = 1;
  const pid_t pid = ::getpid();
  const audit_token_t self = {
      {::geteuid(), ::geteuid(), ::getegid(), ::getuid(), ::getgid(), static_cast<unsigned>(pid), 0, kSomePidVersion}};
  NSValue* const token = [NSValue valueWithBytes:&self objCType:@encode(audit_token_t)];
  return [[NSXPCConnection alloc] initWithToken:token processIdentifier:pid];
}

void setDoubleClientIdentity(id token, pid_t pid) {
  const std::lock_guard lock(worldMutex);
  clientToken = token;
  clientPid = pid;
}

void endDoubleService(const std::string& machServiceName) { [listenerNamed(machServiceName) endEveryConnection]; }

void giveUpDoubleConnections(const std::string& machServiceName) {
  [listenerNamed(machServiceName) giveUpEveryConnection];
}

void failNextDoubleMessage(NSError* error) {
  const std::lock_guard lock(worldMutex);
  scriptedFailure = error;
}

std::size_t openDoubleConnections(const std::string& machServiceName) {
  return [listenerNamed(machServiceName) servedCount];
}

void DoubleMessage::reply(const std::function<void()>& deliver) {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(done_, true)) return;
  }
  deliver();
}

void DoubleMessage::fail(NSError* error) {
  reply([&] { errorHandler_(error); });
}

bool DoubleMessage::isDone() {
  const std::lock_guard lock(mutex_);
  return done_;
}

}  // namespace halvo::sim

@implementation NSXPCInterface {
  Protocol* _protocol;
}
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol {
  NSXPCInterface* const interface = [[NSXPCInterface alloc] init];
  interface->_protocol = protocol;
  return interface;
}
- (Protocol*)protocol {
  return _protocol;
}
@end

using namespace halvo::sim;

@implementation NSXPCListenerEndpoint {
  NSString* _listenerName;
}

- (instancetype)initWithListener:(NSXPCListener*)listener {
  self = [super init];
  if (self != nil) _listenerName = listener.machServiceName;
  return self;
}

- (NSString*)listenerName {
  return _listenerName;
}

@end

@implementation NSXPCListener {
  std::string _name;
  SerialQueue _queue;
  std::mutex _mutex;  // guards everything below
  BOOL _resumed;
  NSMutableArray<NSXPCConnection*>* _served;
}

+ (NSXPCListener*)anonymousListener {
  static std::atomic<int> made{0};
  const std::string name = "anonymous " + std::to_string(++made);
  return [[NSXPCListener alloc] initWithMachServiceName:@(name.c_str())];
}

- (instancetype)initWithMachServiceName:(NSString*)name {
  self = [super init];
  if (self != nil) {
    _name = name.UTF8String;
    _served = [NSMutableArray array];
  }
  return self;
}

- (NSXPCListenerEndpoint*)endpoint {
  return [[NSXPCListenerEndpoint alloc] initWithListener:self];
}

- (NSString*)machServiceName {
  return @(_name.c_str());
}

- (void)resume {
  {
    const std::lock_guard lock(_mutex);
    _resumed = YES;
  }
  publishListener(_name, self);
}

- (void)invalidate {
  withdrawListener(_name, self);
  [self endEveryConnection];
}

- (BOOL)offer:(NSXPCConnection*)connection {
  {
    const std::lock_guard lock(_mutex);
    if (!_resumed) return NO;
  }
  const id<NSXPCListenerDelegate> delegate = self.delegate;
  if (![delegate respondsToSelector:@selector(listener:shouldAcceptNewConnection:)]) return NO;
  return [delegate listener:self shouldAcceptNewConnection:connection];
}

- (BOOL)takeClient:(NSXPCConnection*)connection {
  std::promise<BOOL> answer;
  _queue.async([&] {
    const BOOL taken = [self offer:connection];
    if (taken) {
      const std::lock_guard lock(_mutex);
      [_served addObject:connection];
    }
    answer.set_value(taken);
  });
  return answer.get_future().get();
}

- (void)dropClient:(NSXPCConnection*)connection {
  if (connection == nil) return;
  const std::lock_guard lock(_mutex);
  [_served removeObjectIdenticalTo:connection];
}

- (NSArray<NSXPCConnection*>*)takeServed {
  const std::lock_guard lock(_mutex);
  NSArray<NSXPCConnection*>* const served = [_served copy];
  [_served removeAllObjects];
  return served;
}

- (void)endEveryConnection {
  for (NSXPCConnection* connection in [self takeServed]) [connection endByInterruption];
}

- (void)giveUpEveryConnection {
  for (NSXPCConnection* connection in [self takeServed]) [connection endByInvalidation];
}

- (std::size_t)servedCount {
  const std::lock_guard lock(_mutex);
  return _served.count;
}

@end
