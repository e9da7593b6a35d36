#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "platform/SystemLog.h"
#include "sim/transport/ConnectionServer.h"
#include "sim/transport/ServiceSocket.h"
#include "transport/IncomingConnection.h"
#include "transport/ServiceListener.h"

namespace halvo {
namespace sim {
namespace {

// The connections that are being served, each by a thread of its own.
// Any thread.
class OpenConnections : public std::enable_shared_from_this<OpenConnections> {
 public:
  // Runs `serve` on a thread of its own; the socket is closed when it returns. The thread leaves nothing behind. When
  // no thread can be had, the socket is closed at once.
  void add(UniqueDescriptor socket, std::function<void(int socket)> serve) {
    const int number = socket.get();
    {
      const std::lock_guard lock(mutex_);
      sockets_.insert(number);
    }
    try {
      std::thread([self = shared_from_this(), number, serve = std::move(serve)]() mutable {
        const UniqueDescriptor kept(number);
        serve(number);
        serve = nullptr;
        self->forget(number);
      }).detach();
      static_cast<void>(socket.release());
    } catch (const std::system_error&) {
      forget(number);
    }
  }

  // Cuts every connection that was added so far, and returns when all their threads are done.
  void closeAll() {
    std::unique_lock lock(mutex_);
    for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
    changed_.wait(lock, [this] { return sockets_.empty(); });
  }

 private:
  void forget(int socket) {
    const std::lock_guard lock(mutex_);
    sockets_.erase(socket);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::set<int> sockets_;  // guarded by mutex_; a socket is closed only after it was taken out
};

class SocketConnection final : public IncomingConnection {
 public:
  explicit SocketConnection(int socket) : peer_(peerIdentityOf(socket)) {}

  audit_token_t auditTokenValue() const override { return peer_.token; }
  pid_t processIdentifier() const override { return peer_.pid; }
  void exportHandler(std::shared_ptr<HalvoHelperProtocol> handler) override { handler_ = std::move(handler); }
  void resume() override { resumed_ = true; }

  // Nothing unless the delegate has done all that admits a client.
  std::shared_ptr<HalvoHelperProtocol> takeHandler() { return resumed_ ? std::move(handler_) : nullptr; }

 private:
  const PeerIdentity peer_;
  std::shared_ptr<HalvoHelperProtocol> handler_;
  bool resumed_ = false;
};

// Without a listening socket, which stays the caller's, it admits nobody. Destroying it cuts all its connections and
// waits for the messages that are being handled; not from one of its own threads.
class SocketServiceListener final : public ServiceListener {
 public:
  explicit SocketServiceListener(std::optional<int> listeningSocket)
      : listeningSocket_(listeningSocket),
        connections_(std::make_shared<OpenConnections>()),
        stop_(::eventfd(0, EFD_CLOEXEC)) {}

  ~SocketServiceListener() override {
    static_cast<void>(::eventfd_write(stop_.get(), 1));
    if (accepting_.joinable()) accepting_.join();
    connections_->closeAll();
  }

  void setDelegate(std::shared_ptr<ServiceListenerDelegate> delegate) override { delegate_ = std::move(delegate); }

  void resume() override {
    if (!listeningSocket_ || !delegate_) return;
    // Between the notice of a client and its acceptance the socket could be emptied by another process that shares it.
    ::fcntl(*listeningSocket_, F_SETFL, ::fcntl(*listeningSocket_, F_GETFL) | O_NONBLOCK);
    accepting_ = std::thread([this] { acceptClients(); });
  }

 private:
  void acceptClients() {
    while (waitForClient()) {
      UniqueDescriptor client(::accept4(*listeningSocket_, nullptr, nullptr, SOCK_CLOEXEC));
      if (client.valid()) {
        admit(std::move(client));
      } else if (!outlasts(errno)) {
        return;
      }
    }
  }

  // False when the listener is being destroyed.
  bool waitForClient() {
    std::array<pollfd, 2> events{pollfd{*listeningSocket_, POLLIN, 0}, pollfd{stop_.get(), POLLIN, 0}};
    while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) {
    }
    return events[1].revents == 0;
  }

  // Whether accepting goes on after this error. When descriptors or memory are short, others must end first.
  bool outlasts(int error) {
    if (error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOBUFS) {
      constexpr int kPauseMilliseconds = 50;
      pollfd stopped{.fd = stop_.get(), .events = POLLIN, .revents = 0};
      static_cast<void>(::poll(&stopped, 1, kPauseMilliseconds));
      return true;
    }
    return error != EBADF && error != EINVAL && error != ENOTSOCK;
  }

  void admit(UniqueDescriptor client) {
    SocketConnection connection(client.get());
    if (!delegate_->shouldAcceptNewConnection(connection)) return;
    auto handler = connection.takeHandler();
    if (!handler) return;
    connections_->add(std::move(client),
                      [handler = std::move(handler)](int socket) { serveConnection(socket, *handler); });
  }

  const std::optional<int> listeningSocket_;
  const std::shared_ptr<OpenConnections> connections_;
  const UniqueDescriptor stop_;
  std::shared_ptr<ServiceListenerDelegate> delegate_;
  std::thread accepting_;
};

}  // namespace

}  // namespace sim

std::unique_ptr<ServiceListener> ServiceListener::forMachService(const std::string& machServiceName) {
  const auto socket = sim::launchSocketFor(machServiceName);
  if (!socket) halvoSystemLog("launchd passed no socket for " + machServiceName + ": nobody can connect");
  return std::make_unique<sim::SocketServiceListener>(socket);
}

}  // namespace halvo
