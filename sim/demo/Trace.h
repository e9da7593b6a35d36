// The walk in the form of Chrome's trace events, which chrome://tracing and Perfetto show.
#pragma once

#include <string>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

// A JSON object. Each step is a process, each track of its time line a thread, each mark a complete event; moments are
// microseconds since the first one. Bytes that are no UTF-8 are replaced.
std::string traceJSON(const std::vector<Step>& steps);

}  // namespace halvo::sim
