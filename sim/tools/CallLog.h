// The record of every run of a stand-in system tool, so that a test or a person sees which tools ran and in which
// order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

class CallLog {
 public:
  // Appends one line, a JSON object with "time" (UTC), "tool" (its absolute path), "arguments" and "status", to
  // calls.jsonl in the state folder. Lines of tools that end at the same moment stay whole. Says on standard error when
  // the line cannot be written; a tool works on without it.
  static void append(std::string_view tool, const std::vector<std::string>& arguments, int status);

  // How many runs of the tool are recorded; with a `verb`, those whose first argument it was.
  static int count(std::string_view tool, std::string_view verb);
};

}  // namespace halvo::sim
