#include "sim/transport/MethodTable.h"

#include <cstddef>
#include <exception>
#include <memory>

#include "sim/transport/MessageArguments.h"
#include "sim/transport/PendingReply.h"
#include "sim/transport/WireFormat.h"

namespace halvo::sim {
namespace {

// Third-party clients greet a bus before they do anything else and wait for the name that it gives them.
int onHello(sd_bus_message* call, void* /*userdata*/, sd_bus_error* /*error*/) {
  return sd_bus_reply_method_return(call, "s", ":1.0");
}

const sd_bus_vtable kGreeting[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Hello", "", "s", onHello, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

// The library otherwise applies a check of its own to the client's uid; who may call was decided on admission.
std::uint64_t flagsOf(const HalvoHelperMessage& message) {
  return message.reply == ReplyKind::none ? SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY
                                          : SD_BUS_VTABLE_UNPRIVILEGED;
}

void answerWithout(sd_bus_message* call) {
  // Some clients ask for an answer to everything.
  if (sd_bus_message_get_expect_reply(call) > 0) sd_bus_reply_method_return(call, "");
}

void answer(HalvoHelperProtocol& handler, const HalvoHelperMessage& message, const MessageArguments& arguments,
            sd_bus_message* call) {
  const auto pending = std::make_shared<PendingReply>(call);
  try {
    const auto functions = pending->functions();
    callHandler(handler, message.id, arguments, functions.text, functions.boolean);
  } catch (const std::exception&) {
    pending->fail("The helper could not handle the message.");
  }
  // The next message of this connection waits for the answer, also when it comes from another thread.
  pending->waitUntilSettled();
}

}  // namespace

MethodTable::MethodTable(HalvoHelperProtocol& handler) {
  for (std::size_t i = 0; i < methods_.size(); ++i) methods_[i] = {&handler, kHalvoHelperMessages[i].id};
}

bool MethodTable::addTo(sd_bus* bus) {
  return sd_bus_add_object_vtable(bus, nullptr, kHelperObject, kHelperInterface, description(), methods_.data()) >= 0 &&
         sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/DBus", "org.freedesktop.DBus", kGreeting, nullptr) >=
             0;
}

int MethodTable::onCall(sd_bus_message* call, void* method, sd_bus_error* /*error*/) {
  // Nothing may be thrown through the library's frames.
  try {
    const auto& [handler, id] = *static_cast<const Method*>(method);
    const HalvoHelperMessage& message = halvoMessage(id);
    MessageArguments arguments;
    const int status = readArguments(call, message, arguments);
    if (status < 0) return status;
    if (message.reply == ReplyKind::none) {
      callHandler(*handler, id, arguments, {}, {});
      answerWithout(call);
    } else {
      answer(*handler, message, arguments, call);
    }
    return 1;
  } catch (const std::exception&) {
    return -ENOMEM;
  }
}

const sd_bus_vtable* MethodTable::description() {
  // The flags are a bit field of this width.
  constexpr std::uint64_t kFlagBits = (std::uint64_t{1} << 56U) - 1;
  static const auto table = [] {
    std::array<sd_bus_vtable, kHalvoHelperMessages.size() + 2> entries{};
    entries.front() = SD_BUS_VTABLE_START(0);
    for (std::size_t i = 0; i < kHalvoHelperMessages.size(); ++i) {
      const WireMessage& wire = wireMessages()[i];
      sd_bus_vtable& entry = entries[i + 1];
      entry = SD_BUS_METHOD_WITH_NAMES_OFFSET(wire.member.c_str(), wire.signature.c_str(), , wire.result.c_str(),
                                              wire.argumentNames.c_str(), onCall, i * sizeof(Method),
                                              flagsOf(kHalvoHelperMessages[i]) & kFlagBits);
    }
    entries.back() = SD_BUS_VTABLE_END;
    return entries;
  }();
  return table.data();
}

}  // namespace halvo::sim
