// A step as tracks of a time line: one for each connection, with the request, the tools that ran for it, and its waits.
#pragma once

#include <string>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

struct Mark {
  enum class Kind { request, tool, wait };
  Kind kind;
  std::string text;
  Moment began;
  Moment ended;
  bool operator==(const Mark&) const = default;
};

// Two marks of one track lie one after the other, or one in the other.
struct Track {
  std::string name;
  std::vector<Mark> marks;
  bool operator==(const Track&) const = default;
};

// In the order in which the connections were made. What a connection has done after its answer is a track of its own
// behind it; what happens while there is none comes last. No track is empty.
std::vector<Track> timeLine(const Step& step);

struct Span {
  Moment began;
  Moment ended;
};

// From the first mark to the last.
Span spanOf(const std::vector<Track>& tracks);

std::string nameOf(Mark::Kind kind);

// The walk in the form of Chrome's trace events, which chrome://tracing and Perfetto show.
// A JSON object. Each step is a process, each track of its time line a thread, each mark a complete event; moments are
// microseconds since the first one. Bytes that are no UTF-8 are replaced.
std::string traceJSON(const std::vector<Step>& steps);

}  // namespace halvo::sim
