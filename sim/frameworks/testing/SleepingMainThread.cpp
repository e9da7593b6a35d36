// Linked into test programs that run the main queue.
#include "sim/frameworks/dispatch/MainQueue.h"

namespace halvo::sim {
namespace {

[[maybe_unused]] const bool kSleeps = [] {
  letMainThreadSleepInstead();
  return true;
}();

}  // namespace
}  // namespace halvo::sim
