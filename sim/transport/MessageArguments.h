// The arguments of any message of the protocol, between the wire and the C++ methods.
#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <string>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "HalvoHelperXPC/MessageTable.h"

namespace halvo::sim {

// No message has more arguments of a kind than fit here; they are filled in the order of the message's arguments.
struct MessageArguments {
  AuthorizationBlob authorization{};
  std::array<std::string, 2> texts{};
  bool acceptAudioInterruption = false;
};

// Negative when the message does not hold these arguments.
int readArguments(sd_bus_message* call, const HalvoHelperMessage& message, MessageArguments& arguments);

// Negative when the bus library refuses an argument.
int appendArguments(sd_bus_message* call, const HalvoHelperMessage& message, const MessageArguments& arguments);

// Calls the handler's method for the message. Exactly the reply of the message's kind is used.
void callHandler(HalvoHelperProtocol& handler, MessageId id, const MessageArguments& arguments, const TextReply& text,
                 const BoolReply& boolean);

}  // namespace halvo::sim
