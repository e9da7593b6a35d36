#include "sim/transport/PendingReply.h"

#include "sim/transport/BusHandles.h"
#include "sim/transport/WireFormat.h"

namespace halvo::sim {

PendingReply::Functions PendingReply::functions() {
  // Counts the copies of the functions; the last one to go says that nobody will answer any more.
  const std::shared_ptr<PendingReply> ticket(this, [self = shared_from_this()](PendingReply* reply) {
    reply->fail("The helper dropped the message without an answer.");
  });
  return {
      .text =
          [ticket](const std::string& json) {
            ticket->answer([&](sd_bus_message* reply) {
              return sd_bus_message_append_basic(reply, 's', sendableText(json).c_str());
            });
          },
      .boolean =
          [ticket](bool succeeded) {
            const int value = succeeded ? 1 : 0;
            ticket->answer([&](sd_bus_message* reply) { return sd_bus_message_append_basic(reply, 'b', &value); });
          },
  };
}

void PendingReply::answer(const Filler& fill) {
  const std::lock_guard lock(mutex_);
  if (settled_) return;
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_method_return(call_, &raw) >= 0) {
    const OwnedBusMessage reply(raw);
    // A failure means that the client is gone, which the connection's thread finds out by itself.
    if (fill(raw) >= 0 && sd_bus_send(nullptr, raw, nullptr) >= 0) sd_bus_flush(sd_bus_message_get_bus(call_));
  }
  settled_ = true;
  settledChanged_.notify_all();
}

void PendingReply::fail(const char* reason) {
  const std::lock_guard lock(mutex_);
  if (settled_) return;
  sd_bus_reply_method_errorf(call_, SD_BUS_ERROR_FAILED, "%s", reason);
  settled_ = true;
  settledChanged_.notify_all();
}

void PendingReply::waitUntilSettled() {
  std::unique_lock lock(mutex_);
  settledChanged_.wait(lock, [this] { return settled_; });
}

}  // namespace halvo::sim
