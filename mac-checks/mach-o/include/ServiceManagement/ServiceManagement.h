// Declarations of ServiceManagement for the Mach-O check: only the names in use.
#pragma once

#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSInteger, SMAppServiceStatus) {
  SMAppServiceStatusNotRegistered = 0,
  SMAppServiceStatusEnabled = 1,
  SMAppServiceStatusRequiresApproval = 2,
  SMAppServiceStatusNotFound = 3,
};

HALVO_INTRODUCED(13.0)
@interface SMAppService : NSObject
@property(readonly) SMAppServiceStatus status;
+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
+ (void)openSystemSettingsLoginItems;
@end

NS_ASSUME_NONNULL_END
