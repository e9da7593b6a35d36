// The connections that are being served, each by a thread of its own.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {

// Any thread.
class OpenConnections : public std::enable_shared_from_this<OpenConnections> {
 public:
  // Runs `serve` on a thread of its own; the socket is closed when it returns. The thread leaves nothing behind. When
  // no thread can be had, the socket is closed at once.
  void add(UniqueDescriptor socket, std::function<void(int socket)> serve);

  // Cuts every connection that was added so far, and returns when all their threads are done.
  void closeAll();

 private:
  void forget(int socket);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::set<int> sockets_;  // guarded by mutex_; a socket is closed only after it was taken out
};

}  // namespace halvo::sim
