#include "sim/transport/ConnectionServer.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/transport/WireFormat.h"

namespace halvo::sim {
namespace {

// The answer to one message: sent at most once, from any thread, by whoever holds the reply functions.
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
  [[nodiscard]] Functions functions() {
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

  // Tells the client that its message failed, unless it has been answered.
  void fail(const char* reason) {
    settle([&] { sd_bus_reply_method_errorf(call_, SD_BUS_ERROR_FAILED, "%s", reason); });
  }

  // Returns when the message has been answered, in whatever way.
  void waitUntilSettled() {
    std::unique_lock lock(mutex_);
    settledChanged_.wait(lock, [this] { return settled_; });
  }

 private:
  template <typename Filler>
  void answer(Filler fill) {
    settle([&] {
      sd_bus_message* raw = nullptr;
      if (sd_bus_message_new_method_return(call_, &raw) < 0) return;
      const OwnedBusMessage reply(raw);
      // A failure means that the client is gone, which the connection's thread finds out by itself.
      if (fill(raw) >= 0 && sd_bus_send(nullptr, raw, nullptr) >= 0) sd_bus_flush(sd_bus_message_get_bus(call_));
    });
  }

  template <typename Send>
  void settle(Send send) {
    const std::lock_guard lock(mutex_);
    if (settled_) return;
    send();
    settled_ = true;
    settledChanged_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable settledChanged_;
  sd_bus_message* const call_;  // used only until settled
  bool settled_ = false;        // guarded by mutex_
};

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

// Serves the messages of the protocol on one bus connection, each by a call of the handler. Stays where it is while the
// bus uses it, and must outlive it.
class MethodTable {
 public:
  explicit MethodTable(HalvoHelperProtocol& handler) {
    for (std::size_t i = 0; i < methods_.size(); ++i) methods_[i] = {&handler, kHalvoHelperMessages[i].id};
  }
  MethodTable(const MethodTable&) = delete;
  MethodTable& operator=(const MethodTable&) = delete;

  // False when the library refuses.
  [[nodiscard]] bool addTo(sd_bus* bus) {
    const auto add = [bus](const char* object, const char* interface, const sd_bus_vtable* table, void* methods) {
      return sd_bus_add_object_vtable(bus, nullptr, object, interface, table, methods) >= 0;
    };
    return add(kHelperObject, kHelperInterface, description(), methods_.data()) &&
           add("/org/freedesktop/DBus", "org.freedesktop.DBus", kGreeting, nullptr);
  }

 private:
  // What the library hands back with a call; the position tells the message.
  struct Method {
    HalvoHelperProtocol* handler;
    MessageId id;
  };

  static int onCall(sd_bus_message* call, void* method, sd_bus_error* /*error*/) {
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

  static const sd_bus_vtable* description() {
    // The flags are a bit field of this width.
    constexpr std::uint64_t kFlagBits = (std::uint64_t{1} << 56U) - 1;
    static const auto table = [] {
      std::array<sd_bus_vtable, kHalvoHelperMessages.size() + 2> entries{};
      entries.front() = SD_BUS_VTABLE_START(0);
      for (std::size_t i = 0; i < kHalvoHelperMessages.size(); ++i) {
        const WireMessage& wire = wireMessages()[i];
        entries[i + 1] = SD_BUS_METHOD_WITH_NAMES_OFFSET(
            wire.member.c_str(), wire.signature.c_str(), , wire.result.c_str(), wire.argumentNames.c_str(), onCall,
            i * sizeof(Method), flagsOf(kHalvoHelperMessages[i]) & kFlagBits);
      }
      entries.back() = SD_BUS_VTABLE_END;
      return entries;
    }();
    return table.data();
  }

  std::array<Method, kHalvoHelperMessages.size()> methods_;
};

// The server's side of a connection. Authenticating proves nothing here and only has to be done: admission was decided
// before.
OwnedBus serveOn(int socket, MethodTable& methods) {
  // The library owns what it is given, and closes it on exec, while the caller's descriptor is what the listener cuts
  // connections by. By dup(2), which the thread sanitizer follows.
  UniqueDescriptor own(::dup(socket));
  sd_bus* raw = nullptr;
  if (!own.valid() || sd_bus_new(&raw) < 0) return nullptr;
  OwnedBus bus(raw);
  if (sd_bus_set_fd(raw, own.get(), own.get()) < 0) return nullptr;
  static_cast<void>(own.release());
  sd_id128_t identifier{};
  const bool started = sd_id128_randomize(&identifier) >= 0 && sd_bus_set_server(raw, 1, identifier) >= 0 &&
                       sd_bus_set_anonymous(raw, 1) >= 0 && methods.addTo(raw) && sd_bus_start(raw) >= 0;
  return started ? std::move(bus) : nullptr;
}

}  // namespace

void serveConnection(int socket, HalvoHelperProtocol& handler) {
  MethodTable methods(handler);
  const OwnedBus bus = serveOn(socket, methods);
  int status = bus ? 1 : -1;
  while (status >= 0) {
    status = sd_bus_process(bus.get(), nullptr);
    if (status == 0) status = sd_bus_wait(bus.get(), UINT64_MAX);
  }
}

}  // namespace halvo::sim
