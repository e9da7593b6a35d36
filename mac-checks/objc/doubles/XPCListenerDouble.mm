#include <atomic>
#include <future>
#include <mutex>
#include <string>

#include "mac-checks/objc/doubles/SerialQueue.h"
#import "mac-checks/objc/doubles/XPCDoubleWorld.h"

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
