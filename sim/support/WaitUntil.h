// Waiting for what happens in another process, without guessing how long it takes.
#pragma once

#include <chrono>
#include <thread>

namespace halvo::sim {

// Asks `condition` again and again until it holds (true) or `bound` of real time has passed (false).
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(30)) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

}  // namespace halvo::sim
