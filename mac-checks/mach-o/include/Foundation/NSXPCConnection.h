// Declarations of NSXPC, as in Foundation.h. The doubles that the Objective-C++ files run against implement these, too.
#pragma once

NS_ASSUME_NONNULL_BEGIN

@class NSXPCConnection, NSXPCInterface, NSXPCListener, NSXPCListenerEndpoint;

typedef NSUInteger NSXPCConnectionOptions;
enum : NSXPCConnectionOptions { NSXPCConnectionPrivileged = 1 << 12 };

enum : NSInteger {
  NSXPCConnectionInterrupted = 4097,
  NSXPCConnectionInvalid = 4099,
  NSXPCConnectionCodeSigningRequirementFailure HALVO_INTRODUCED(13.0) = 4102,
};

@interface NSXPCConnection : NSObject
- (id)remoteObjectProxyWithErrorHandler:(void (^)(NSError* error))handler;
- (instancetype)initWithMachServiceName:(NSString*)name options:(NSXPCConnectionOptions)options;
- (instancetype)initWithListenerEndpoint:(NSXPCListenerEndpoint*)endpoint;
@property(nullable, retain) NSXPCInterface* exportedInterface;
@property(nullable, retain) id exportedObject;
@property(nullable, retain) NSXPCInterface* remoteObjectInterface;
@property(nullable, copy) void (^interruptionHandler)(void);
@property(nullable, copy) void (^invalidationHandler)(void);
@property(readonly) pid_t processIdentifier;
- (void)resume;
- (void)invalidate;
@end

@protocol NSXPCListenerDelegate <NSObject>
@optional
- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection;
@end

@interface NSXPCListenerEndpoint : NSObject
@end

@interface NSXPCListener : NSObject
+ (NSXPCListener*)anonymousListener;
@property(readonly, retain) NSXPCListenerEndpoint* endpoint;
- (instancetype)initWithMachServiceName:(NSString*)name NS_DESIGNATED_INITIALIZER;
@property(nullable, weak) id<NSXPCListenerDelegate> delegate;
- (void)resume;
- (void)invalidate;
@end

@interface NSXPCInterface : NSObject
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol;
@end

NS_ASSUME_NONNULL_END
