// Stands in for NSXPC between two ends inside one process. The package registers classes under the platform's names,
// and the first registration wins silently: so the doubles bear names of their own.
#pragma once

#import <Foundation/NSError.h>
#import <Foundation/NSObject.h>
#import <Foundation/NSString.h>
#include <sys/types.h>

#define NSXPCConnection HalvoDoubleXPCConnection
#define NSXPCInterface HalvoDoubleXPCInterface
#define NSXPCListener HalvoDoubleXPCListener
#define NSXPCListenerEndpoint HalvoDoubleXPCListenerEndpoint

@class NSXPCConnection;
@class NSXPCListener;

enum : NSInteger {
  NSXPCConnectionInterrupted = 4097,
  NSXPCConnectionInvalid = 4099,
  NSXPCConnectionReplyInvalid = 4101,
  NSXPCConnectionCodeSigningRequirementFailure = 4102,
};

typedef NSUInteger NSXPCConnectionOptions;
enum : NSXPCConnectionOptions { NSXPCConnectionPrivileged = 1 << 12 };

@protocol NSXPCListenerDelegate <NSObject>
@optional
- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection;
@end

@interface NSXPCInterface : NSObject
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol;
@property(readonly) Protocol* protocol;
@end

@interface NSXPCListenerEndpoint : NSObject
@end

// The listeners of one name find each other's clients through a table in the process, as launchd would. A listener
// without a name has one that nobody else knows.
@interface NSXPCListener : NSObject
+ (NSXPCListener*)anonymousListener;
- (instancetype)initWithMachServiceName:(NSString*)name;
@property(readonly) NSXPCListenerEndpoint* endpoint;
@property(weak) id<NSXPCListenerDelegate> delegate;
- (void)resume;
- (void)invalidate;

// For tests: asks the delegate as the system does; a listener that was not resumed or has no delegate refuses.
- (BOOL)offer:(NSXPCConnection*)connection;
@property(readonly) NSString* machServiceName;
@end

@interface NSXPCConnection : NSObject
- (instancetype)initWithMachServiceName:(NSString*)name options:(NSXPCConnectionOptions)options;
- (instancetype)initWithListenerEndpoint:(NSXPCListenerEndpoint*)endpoint;
@property(retain) NSXPCInterface* exportedInterface;
@property(retain) id exportedObject;
@property(retain) NSXPCInterface* remoteObjectInterface;
@property(copy) void (^interruptionHandler)(void);
@property(copy) void (^invalidationHandler)(void);
@property(readonly) pid_t processIdentifier;
- (id)remoteObjectProxyWithErrorHandler:(void (^)(NSError* error))handler;
- (void)resume;
- (void)invalidate;

// For tests: the helper's end of a connection, whose key "auditToken" answers with `token`.
- (instancetype)initWithToken:(id)token processIdentifier:(pid_t)pid;
@property BOOL withoutTokenKey;      // as on a system that has dropped the key
@property(readonly) int tokenReads;  // how often the key was asked for
@property(readonly) int resumeCount;
@property(readonly) NSXPCConnectionOptions options;
@end
