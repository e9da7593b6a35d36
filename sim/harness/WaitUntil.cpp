#include "sim/harness/WaitUntil.h"

#include <thread>

namespace halvo::sim {
namespace {

constexpr std::chrono::milliseconds kPause(5);

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

}  // namespace halvo::sim
