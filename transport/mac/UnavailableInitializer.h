// For the `init` that every class inherits from NSObject and that a class with a designated initialiser cannot honour.
// For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

namespace halvo {

// Logs the class and "init()", then stops the process: an object without its collaborators must never take a request.
[[noreturn]] void stopAtUnavailableInitializer(Class _Nonnull type);

}  // namespace halvo
