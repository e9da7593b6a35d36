// launchd's end of its control socket.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/ControlClient.h"
#include "sim/support/UnixSocket.h"

namespace halvo::sim {

// Never blocks: a client that sends nothing, or does not read, holds up nobody.
class ControlServer {
 public:
  using Answer = std::function<void(const ControlReply&)>;
  struct Client {
    bool mayChange = false;                // it is root, or whoever runs this launchd
    std::vector<UniqueDescriptor> passed;  // the descriptors that came with the request
  };
  // Works on one request; may keep `answer` for later, and calls it at most once.
  using Handler = std::function<void(const ControlRequest&, const Client&, const Answer& answer)>;

  ControlServer(ListeningSocket socket, Handler handler);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  ~ControlServer() = default;

  // serve() has something to do when one of these is readable.
  [[nodiscard]] std::vector<int> descriptors() const;
  void serve();

 private:
  struct Connection {
    UniqueDescriptor socket;
    Client client;
    bool waiting = false;  // for its answer
  };

  void acceptAll();
  void read(int number);
  // The text of the client's request: nothing while there is none, empty when the client has hung up.
  static std::optional<std::string> receive(Connection& connection);
  void answer(int number, const ControlReply& reply);

  ListeningSocket socket_;
  Handler handler_;
  std::map<int, Connection> connections_;  // by a number that is never used again
  int nextNumber_ = 0;
};

}  // namespace halvo::sim
