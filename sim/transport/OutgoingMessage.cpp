#include "sim/transport/OutgoingMessage.h"

#include <algorithm>

#include "sim/transport/WireFormat.h"

namespace halvo::sim {
namespace {

ServiceFailure rejected(std::string description) { return {ServiceFailure::Kind::rejected, std::move(description)}; }

}  // namespace

std::optional<ServiceFailure> OutgoingMessage::obstacle() const {
  const bool holdsNul = std::any_of(arguments.texts.begin(), arguments.texts.end(),
                                    [](const std::string& one) { return one.find('\0') != std::string::npos; });
  return holdsNul ? std::optional(rejected("A text with a NUL in it cannot be sent.")) : std::nullopt;
}

OwnedBusMessage OutgoingMessage::encode(sd_bus* bus) const {
  const HalvoHelperMessage& message = halvoMessage(id);
  const std::string& member = wireMessages()[static_cast<std::size_t>(id)].member;
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_method_call(bus, &raw, nullptr, kHelperObject, kHelperInterface, member.c_str()) < 0) {
    return nullptr;
  }
  OwnedBusMessage call(raw);
  if (sd_bus_message_set_expect_reply(raw, expectsReply() ? 1 : 0) < 0) return nullptr;
  if (appendArguments(raw, message, arguments) < 0) return nullptr;
  return call;
}

void OutgoingMessage::deliver(sd_bus_message* answer) const {
  if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
    return fail(rejected(error->message == nullptr ? error->name : error->message));
  }
  const char* json = nullptr;
  int succeeded = 0;
  switch (halvoMessage(id).reply) {
    case ReplyKind::text:
      if (sd_bus_message_read_basic(answer, 's', static_cast<void*>(&json)) > 0) return text(json);
      break;
    case ReplyKind::boolean:
      if (sd_bus_message_read_basic(answer, 'b', &succeeded) > 0) return boolean(succeeded != 0);
      break;
    case ReplyKind::none:
      return;
  }
  fail(rejected("The helper's answer has another form than agreed."));
}

void OutgoingMessage::fail(const ServiceFailure& failure) const {
  if (onFailure) onFailure(failure);
}

}  // namespace halvo::sim
