// A private queue of the XPC doubles: one thread, one block at a time, in order.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace halvo::sim {

// Work that was queued is done even when the queue's owner has gone: the thread ends by itself after the last block.
class SerialQueue {
 public:
  SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;
  ~SerialQueue();

  void async(std::function<void()> work);

 private:
  struct State;
  static void drain(const std::shared_ptr<State>& state);

  const std::shared_ptr<State> state_;
};

// Returns when no queue in the process has work left or a thread running.
void waitForSerialQueues();

}  // namespace halvo::sim
