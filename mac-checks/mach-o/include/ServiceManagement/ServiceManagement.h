// Declarations of ServiceManagement for the Mach-O check: only the names in use.
#pragma once

#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

HALVO_INTRODUCED(13.0)
@interface SMAppService : NSObject
+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName;
- (BOOL)unregisterAndReturnError:(NSError**)error;
@end

NS_ASSUME_NONNULL_END
