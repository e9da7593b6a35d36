// Stands in for the service manager of an application whose bundle holds one property list, com.halvo.helper.plist.
// Refuses what the system refuses, records what it was asked, and fails as scripted.
#pragma once

#import <Foundation/Foundation.h>

typedef NS_ENUM(NSInteger, SMAppServiceStatus) {
  SMAppServiceStatusNotRegistered = 0,
  SMAppServiceStatusEnabled = 1,
  SMAppServiceStatusRequiresApproval = 2,
  SMAppServiceStatusNotFound = 3,
};

@interface SMAppService : NSObject

@property(readonly) SMAppServiceStatus status;
+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
+ (void)openSystemSettingsLoginItems;

// For tests: the status of the daemon in the bundle, which approving or an answer that no documentation names changes
// from outside; whether registering waits for an administrator.
@property(class) SMAppServiceStatus statusOfTheHelper;
@property(class) BOOL asksAnAdministrator;
// The error of the next calls, nil for none; whether a failure comes without an error object.
@property(class) NSError* scriptedError;
@property(class) BOOL failsWithoutError;
// What was asked since the last reset, as "register com.halvo.helper.plist" and the like.
@property(class, readonly) NSArray<NSString*>* calls;
+ (void)reset;

@end
