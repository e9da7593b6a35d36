// The answer to one message: sent at most once, from any thread, by whoever holds the reply functions.
#pragma once

#include <systemd/sd-bus.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo::sim {

// While a reply is pending, the bus belongs to whoever sends it: the connection's thread only waits.
class PendingReply : public std::enable_shared_from_this<PendingReply> {
 public:
  // When one of them returns, the reply is in the socket: the process may end right after. Of several calls the first
  // counts. When the last copy is dropped and none was called, the client gets an error. Copies may outlive the
  // connection; calling them then has no effect.
  struct Functions {
    TextReply text;
    BoolReply boolean;
  };

  // The answer to `call`, which must live until settled.
  explicit PendingReply(sd_bus_message* call) : call_(call) {}

  // Call once.
  [[nodiscard]] Functions functions();

  // Tells the client that its message failed, unless it has been answered.
  void fail(const char* reason);

  // Returns when the message has been answered, in whatever way.
  void waitUntilSettled();

 private:
  using Filler = std::function<int(sd_bus_message* reply)>;

  void answer(const Filler& fill);

  std::mutex mutex_;
  std::condition_variable settledChanged_;
  sd_bus_message* const call_;  // used only until settled
  bool settled_ = false;        // guarded by mutex_
};

}  // namespace halvo::sim
