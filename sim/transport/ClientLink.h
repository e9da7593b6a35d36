// The client's connection to the helper: the messages on their way, and the thread that keeps it.
#pragma once

#include <systemd/sd-bus.h>

#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/transport/WireFormat.h"
#include "transport/ServiceClient.h"

namespace halvo::sim {

struct OutgoingMessage {
  MessageId id;
  MessageArguments arguments;
  // The one of the message's kind is used; neither for a message without reply.
  TextReply text;
  BoolReply boolean;
  ServiceClient::FailureHandler onFailure;

  [[nodiscard]] bool expectsReply() const { return halvoMessage(id).reply != ReplyKind::none; }

  // Why this message cannot go out as it is; nothing when it can.
  [[nodiscard]] std::optional<ServiceFailure> obstacle() const;

  // The message for `bus`; nothing when the library refuses it.
  [[nodiscard]] OwnedBusMessage encode(sd_bus* bus) const;

  // Calls the reply, or the failure handler when `answer` is an error or not what the message's reply must be.
  void deliver(sd_bus_message* answer) const;
  void fail(const ServiceFailure& failure) const;
};

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
