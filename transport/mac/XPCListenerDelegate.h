// Hands the connections of an NSXPC listener to the program's own delegate. For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "transport/ServiceListener.h"

NS_ASSUME_NONNULL_BEGIN

@interface HalvoListenerDelegate : NSObject <NSXPCListenerDelegate>

// Shares the ownership of `delegate`, which must not be empty.
- (instancetype)initWithDelegate:(std::shared_ptr<halvo::ServiceListenerDelegate>)delegate NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;

@end

NS_ASSUME_NONNULL_END
