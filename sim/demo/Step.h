// What happened in one step of the walk, as data. Others print it, draw it and trace it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/harness/Machine.h"

namespace halvo::sim {

// A moment on the clock of uptimeMicroseconds().
using Moment = std::int64_t;

// One program of the user's side, which is one connection to the helper.
struct Request {
  std::string command;      // as a person would type it
  std::string reply;        // empty when there was none
  int status = 0;           // of the program's end
  std::string explanation;  // what it told the person
  std::string log;          // what the helper told the system log meanwhile
  Moment began = 0;
  Moment ended = 0;
};

struct Wait {
  std::string reason;
  std::size_t connection = 0;  // counted from 1 in the order of the requests; 0 when nobody has one meanwhile
  Moment began = 0;
  Moment ended = 0;
};

struct Step {
  int number = 0;
  std::string title;
  std::vector<Request> requests;
  std::vector<ToolCall> tools;
  std::vector<Wait> waits;
  TreeSnapshot before;                 // what an install or a removal may touch
  TreeSnapshot after;                  // the same when the step was over
  std::vector<std::string> remarks;    // anything else worth seeing, such as log lines
  std::vector<std::string> surprises;  // what differs from what is expected; none when all is well
};

}  // namespace halvo::sim
