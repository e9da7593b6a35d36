// A message of the client on its way to the helper, and who is waiting for its answer.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string>

#include "sim/transport/BusHandles.h"
#include "sim/transport/MessageArguments.h"
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

}  // namespace halvo::sim
