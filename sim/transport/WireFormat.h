// How the protocol looks on the wire: D-Bus messages, derived from the message table and from nothing else.
#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "HalvoHelperXPC/MessageTable.h"

namespace halvo::sim {

inline constexpr const char* kHelperObject = "/com/halvo/helper";
inline constexpr const char* kHelperInterface = "com.halvo.HalvoHelperProtocol";

struct WireMessage {
  std::string member;         // the selector with "_" for ":"
  std::string signature;      // of the arguments
  std::string result;         // of the reply, empty for none
  std::string argumentNames;  // of arguments and result, each ended by a NUL
};

// In the order of the message table. Lives as long as the process.
const std::array<WireMessage, kHalvoHelperMessages.size()>& wireMessages();

// The text as the wire carries it, which is well-formed UTF-8 without NULs: what is neither becomes U+FFFD.
std::string sendableText(std::string_view text);

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

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct BusSlotReleaser {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
struct BusMessageReleaser {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

// A bus connection belongs to one thread at a time. It is closed at once: what is still to be written is lost unless it
// was flushed.
using OwnedBus = std::unique_ptr<sd_bus, BusCloser>;
// A call that waits for its answer; without its slot the answer is dropped.
using OwnedBusSlot = std::unique_ptr<sd_bus_slot, BusSlotReleaser>;
using OwnedBusMessage = std::unique_ptr<sd_bus_message, BusMessageReleaser>;

}  // namespace halvo::sim
