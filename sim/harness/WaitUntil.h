// Waiting for what happens in another process, without guessing how long it takes.
#pragma once

#include <chrono>
#include <functional>

namespace halvo::sim {

// Asks `condition` again and again until it holds (true) or `bound` of real time has passed (false).
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound = std::chrono::seconds(30));

}  // namespace halvo::sim
