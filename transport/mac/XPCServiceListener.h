// The helper's listener on top of one of the system's. For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "transport/ServiceListener.h"

NS_ASSUME_NONNULL_BEGIN

namespace halvo {

// Ends `listener`, which must not be resumed yet, with itself.
std::unique_ptr<ServiceListener> serviceListenerOver(NSXPCListener* listener);

}  // namespace halvo

NS_ASSUME_NONNULL_END
