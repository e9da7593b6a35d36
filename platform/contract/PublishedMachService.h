// A Mach service for a contract test. What stands in for launchd differs between platforms, so each brings its own
// implementation of this class.
#pragma once

#include <string>

namespace halvo {

// Until it goes out of scope, ServiceListener::forMachService() in this process publishes the service `name()`, and
// ServiceClient::forMachService() reaches it. One at a time; the listener must be gone first.
class PublishedMachService {
 public:
  PublishedMachService();
  PublishedMachService(const PublishedMachService&) = delete;
  PublishedMachService& operator=(const PublishedMachService&) = delete;
  ~PublishedMachService();

  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  std::string name_;
};

}  // namespace halvo
