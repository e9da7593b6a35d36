// Publishes a Mach service and hands every new client to a delegate.
#pragma once

#include <memory>
#include <string>

namespace halvo {

class IncomingConnection;

class ServiceListenerDelegate {
 public:
  ServiceListenerDelegate() = default;
  ServiceListenerDelegate(const ServiceListenerDelegate&) = delete;
  ServiceListenerDelegate& operator=(const ServiceListenerDelegate&) = delete;
  virtual ~ServiceListenerDelegate() = default;

  // Called for one new connection at a time, on a thread of the listener. True admits: the delegate has then exported
  // a handler and resumed the connection. False drops the connection; nothing was read from it.
  virtual bool shouldAcceptNewConnection(IncomingConnection& connection) = 0;
};

// Messages of one connection are handled one at a time, in order; those of different connections concurrently.
class ServiceListener {
 public:
  // The listener of the service that launchd keeps under `machServiceName` for this job. It admits nobody until it has
  // a delegate and was resumed.
  static std::unique_ptr<ServiceListener> forMachService(const std::string& machServiceName);

  ServiceListener() = default;
  ServiceListener(const ServiceListener&) = delete;
  ServiceListener& operator=(const ServiceListener&) = delete;
  virtual ~ServiceListener() = default;

  // Shares ownership of the delegate (the platform's own listener would hold it weakly).
  virtual void setDelegate(std::shared_ptr<ServiceListenerDelegate> delegate) = 0;

  // Begins to take connections; returns at once. Call once, with the delegate set.
  virtual void resume() = 0;
};

}  // namespace halvo
