// Stands in for the service manager: knows one daemon, com.halvo.helper.plist, records what it was asked and answers as
// scripted.
#pragma once

#import <Foundation/Foundation.h>

@interface SMAppService : NSObject

+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName;
- (BOOL)unregisterAndReturnError:(NSError**)error;

// For tests: the error of the next unregistrations, nil for success; whether a failure comes without an error object;
// the property lists unregistered since the last reset.
@property(class) NSError* scriptedError;
@property(class) BOOL failsWithoutError;
@property(class, readonly) NSArray<NSString*>* unregisteredPlistNames;
+ (void)reset;

@end
