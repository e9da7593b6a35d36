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

#define HALVO_INTRODUCED(version)
#import "mac-checks/mach-o/include/Foundation/NSXPCConnection.h"

enum : NSInteger { NSXPCConnectionReplyInvalid = 4101 };

@interface NSXPCInterface ()
@property(readonly) Protocol* protocol;
@end

// The listeners of one name find each other's clients through a table in the process, as launchd would. A listener
// without a name has one that nobody else knows.
@interface NSXPCListener ()
// For tests: asks the delegate as the system does; a listener that was not resumed or has no delegate refuses.
- (BOOL)offer:(NSXPCConnection*)connection;
@property(readonly) NSString* machServiceName;
@end

@interface NSXPCConnection ()
// For tests: the helper's end of a connection, whose key "auditToken" answers with `token`.
- (instancetype)initWithToken:(id)token processIdentifier:(pid_t)pid;
@property BOOL withoutTokenKey;      // as on a system that has dropped the key
@property(readonly) int tokenReads;  // how often the key was asked for
@property(readonly) int resumeCount;
@property(readonly) NSXPCConnectionOptions options;
@end
