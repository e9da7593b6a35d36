#import "transport/mac/XPCServiceListener.h"

#include <utility>

#import "platform/mac/FoundationText.h"
#import "transport/mac/XPCListenerDelegate.h"

namespace halvo {
namespace {

class XPCServiceListener final : public ServiceListener {
 public:
  explicit XPCServiceListener(NSXPCListener* listener) : listener_(listener) {}

  ~XPCServiceListener() override {
    // The delegate goes away with this object; a listener that lives on in the system must not ask it again.
    [listener_ invalidate];
  }

  void setDelegate(std::shared_ptr<ServiceListenerDelegate> delegate) override {
    @autoreleasepool {
      delegate_ = [[HalvoListenerDelegate alloc] initWithDelegate:std::move(delegate)];
      listener_.delegate = delegate_;
    }
  }

  void resume() override { [listener_ resume]; }

 private:
  NSXPCListener* const listener_;
  HalvoListenerDelegate* delegate_ = nil;  // the listener itself holds its delegate weakly
};

}  // namespace

std::unique_ptr<ServiceListener> serviceListenerOver(NSXPCListener* listener) {
  return std::make_unique<XPCServiceListener>(listener);
}

std::unique_ptr<ServiceListener> ServiceListener::forMachService(const std::string& machServiceName) {
  @autoreleasepool {
    return serviceListenerOver([[NSXPCListener alloc] initWithMachServiceName:foundationText(machServiceName)]);
  }
}

}  // namespace halvo
