// The object that a client's messages arrive at: turns each into a call of the handler and the answer into the reply.
// For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#import "transport/mac/HalvoHelperXPCProtocol.h"

NS_ASSUME_NONNULL_BEGIN

// Takes nil and objects of other classes for every argument: they reach the handler as the empty value. Without a
// reply block the request is handled and its answer dropped.
@interface HalvoExportedHandler : NSObject <HalvoHelperProtocol>

// Shares the ownership of `handler`, which must not be empty.
- (instancetype)initWithHandler:(std::shared_ptr<halvo::HalvoHelperProtocol>)handler NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;

@end

NS_ASSUME_NONNULL_END
