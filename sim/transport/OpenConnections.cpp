#include "sim/transport/OpenConnections.h"

#include <sys/socket.h>

#include <system_error>
#include <thread>
#include <utility>

namespace halvo::sim {

void OpenConnections::add(UniqueDescriptor socket, std::function<void(int socket)> serve) {
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

void OpenConnections::closeAll() {
  std::unique_lock lock(mutex_);
  for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
  changed_.wait(lock, [this] { return sockets_.empty(); });
}

void OpenConnections::forget(int socket) {
  const std::lock_guard lock(mutex_);
  sockets_.erase(socket);
  changed_.notify_all();
}

}  // namespace halvo::sim
