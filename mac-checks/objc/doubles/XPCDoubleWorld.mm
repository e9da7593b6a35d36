#import "mac-checks/objc/doubles/XPCDoubleWorld.h"

#include <mach/message.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <utility>

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
