// The client's connection to the helper and the thread that keeps it.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/transport/BusHandles.h"
#include "sim/transport/OutgoingMessage.h"
#include "transport/ServiceClient.h"

namespace halvo::sim {

// All answers come from the link's one thread, in the order in which they arrive; no lock is held meanwhile.
class ClientLink : public std::enable_shared_from_this<ClientLink> {
 public:
  explicit ClientLink(std::string machServiceName);

  // Starts the thread. Call once.
  void start();

  // Any thread. After close() the message fails at once, on the caller's thread.
  void send(OutgoingMessage message);

  // Ends the thread; what was not answered fails before this returns. May be called from an answer.
  void close();

 private:
  using Messages = std::list<OutgoingMessage>;

  void run();
  // False when the link was closed.
  bool takeQueued(Messages& taken);
  void transmit(Messages messages);
  // Hands the newest of sent_ to the library. Negative when it refuses.
  int transmitNewest();
  // 0, or the error.
  int connect();
  void process();
  void dropWrittenOneWays();
  void disconnect(int error);
  void failWaiting(const ServiceFailure& failure);
  void waitForWork();
  static int onAnswer(sd_bus_message* answer, void* sent, sd_bus_error* error);

  const std::string machServiceName_;
  const UniqueDescriptor wake_;
  std::thread thread_;

  std::mutex mutex_;
  Messages queued_;      // guarded by mutex_
  bool closed_ = false;  // guarded by mutex_

  // Of the link's thread only.
  struct Sent {
    ClientLink& link;
    OutgoingMessage message;
    OwnedBusSlot slot;  // nothing for a message without reply
  };
  OwnedBus bus_;
  bool greeted_ = false;  // whether the helper has taken this connection
  std::list<Sent> sent_;  // not answered yet, in order
};

}  // namespace halvo::sim
