// The application's end of a connection to the helper.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace halvo {

class HalvoHelperProtocol;

// Why a message got no reply.
struct ServiceFailure {
  enum class Kind {
    unreachable,  // nobody publishes the service, or the helper refused this client and closed the connection
    interrupted,  // the helper ended while the message was on its way or being worked on
    rejected,     // the helper answered that it could not take this message
  };
  Kind kind;
  std::string description;  // the platform's words, for people

  bool operator==(const ServiceFailure&) const = default;
};

class ServiceClient {
 public:
  using FailureHandler = std::function<void(const ServiceFailure&)>;

  // A client of the service under `machServiceName`. Connecting happens with the first message; a later message after
  // an interruption connects anew.
  static std::unique_ptr<ServiceClient> forMachService(const std::string& machServiceName);

  ServiceClient() = default;
  ServiceClient(const ServiceClient&) = delete;
  ServiceClient& operator=(const ServiceClient&) = delete;
  // Closes the connection; the failure handler of a message still waiting is called before this returns.
  virtual ~ServiceClient() = default;

  // The helper's methods as seen from here: each call sends one message and returns at once; then exactly one of the
  // call's reply and `onFailure` is called, on a thread of the client. A method without reply only ever reports that
  // it could not be sent. The proxy lives as long as this object and whoever holds it.
  virtual std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler onFailure) = 0;
};

}  // namespace halvo
