// What the doubles of listener and connection share: who publishes what, and what the system would decide.
#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <string>

namespace halvo::sim {

// Nil when nobody publishes the name, or whoever did has gone.
NSXPCListener* listenerNamed(const std::string& name);
void publishListener(const std::string& name, NSXPCListener* listener);
// Does nothing when another listener has taken the name over.
void withdrawListener(const std::string& name, NSXPCListener* listener);

NSError* xpcError(NSInteger code);
// The error that a test wants the next message to fail with, once; else nil.
NSError* takeScriptedFailure();
// The helper's end of a new connection, with the token and process number that clients have at the moment.
NSXPCConnection* newHelperEnd();
// The same for a client that is this very process.
NSXPCConnection* newHelperEndOfThisProcess();

}  // namespace halvo::sim

@interface NSXPCListenerEndpoint (DoubleEnds)
- (instancetype)initWithListener:(NSXPCListener*)listener;
@property(readonly) NSString* listenerName;
@end

@interface NSXPCConnection (DoubleEnds)
- (void)setClient:(NSXPCConnection*)client;
// The helper ended: the client's end is interrupted.
- (void)endByInterruption;
// The system gave the connection up: the client's end is invalid when this returns. Not on the client's queue.
- (void)endByInvalidation;
// The client ended: the exported object is let go of once the current message is done.
- (void)endExport;
@end

@interface NSXPCListener (DoubleEnds)
// Asks the delegate on the listener's own queue, and serves the connection if it is admitted.
- (BOOL)takeClient:(NSXPCConnection*)connection;
- (void)dropClient:(NSXPCConnection*)connection;
- (void)endEveryConnection;
- (void)giveUpEveryConnection;
- (std::size_t)servedCount;
@end
