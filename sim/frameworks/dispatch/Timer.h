// A repeating timer on the main queue: the object behind dispatch_source_t.
#pragma once

#include <dispatch/dispatch.h>

#include <memory>

namespace halvo::sim {

struct Callout {
  dispatch_function_t function = nullptr;
  void* context = nullptr;
};

// What the main queue keeps of a timer. Guarded by the queue's lock, all of it.
struct TimerState {
  dispatch_time_t next = DISPATCH_TIME_FOREVER;
  std::uint64_t interval = DISPATCH_TIME_FOREVER;
  Callout handler;
  bool activated = false;
  bool cancelled = false;
  bool pending = false;  // due, and waiting for its turn on the queue
  // An active source lives on when the program has dropped its own reference: the queue knows it through here.
  dispatch_source_t source = nullptr;
};

// The first point of the timer's grid after `now`: the phase stays, and periods that were missed merge into one run.
dispatch_time_t nextGridPoint(dispatch_time_t due, std::uint64_t interval, dispatch_time_t now);

}  // namespace halvo::sim
