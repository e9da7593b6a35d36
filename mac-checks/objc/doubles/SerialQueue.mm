#include "mac-checks/objc/doubles/SerialQueue.h"

#import <Foundation/Foundation.h>

#include <thread>
#include <utility>

namespace halvo::sim {
namespace {

struct Threads {
  std::mutex mutex;
  std::condition_variable changed;
  int count = 0;  // guarded by mutex
};

// Never destroyed: the last threads may still be ending when the process does.
Threads& threads() {
  static auto& instance = *new Threads;
  return instance;
}

void countThread(int change) {
  const std::lock_guard lock(threads().mutex);
  threads().count += change;
  threads().changed.notify_all();
}

}  // namespace

struct SerialQueue::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> work;
  bool ending = false;
};

SerialQueue::SerialQueue() : state_(std::make_shared<State>()) {
  countThread(1);
  std::thread([state = state_] { drain(state); }).detach();
}

SerialQueue::~SerialQueue() {
  const std::lock_guard lock(state_->mutex);
  state_->ending = true;
  state_->changed.notify_all();
}

void SerialQueue::async(std::function<void()> work) {
  const std::lock_guard lock(state_->mutex);
  state_->work.push_back(std::move(work));
  state_->changed.notify_all();
}

void SerialQueue::drain(const std::shared_ptr<State>& state) {
  for (;;) {
    std::function<void()> next;
    {
      std::unique_lock lock(state->mutex);
      state->changed.wait(lock, [&] { return state->ending || !state->work.empty(); });
      if (state->work.empty()) break;
      next = std::move(state->work.front());
      state->work.pop_front();
    }
    @autoreleasepool {
      next();
      next = nullptr;
    }
  }
  countThread(-1);
}

void waitForSerialQueues() {
  std::unique_lock lock(threads().mutex);
  threads().changed.wait(lock, [] { return threads().count == 0; });
}

}  // namespace halvo::sim
