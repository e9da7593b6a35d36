// The helper's client on top of the system's connections. For Objective-C++ sources only.
#pragma once

#include <memory>

#include "transport/ServiceClient.h"
#import "transport/mac/XPCLink.h"

namespace halvo {

// Connects with the first message, and anew when a connection was lost.
std::unique_ptr<ServiceClient> serviceClientConnectingBy(XPCConnector connect);

}  // namespace halvo
