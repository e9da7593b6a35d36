// The command line of the demonstration.
#pragma once

#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace halvo::sim {

struct DemoOptions {
  std::set<int> only;  // empty for all steps
  bool quiet = false;
  std::filesystem::path report;  // a folder; empty for none
  std::filesystem::path trace;   // a file; empty for none
};

struct ParserExit {
  int status;
};

// What the words ask for. Where they ask for help or for nothing that there is, the answer has been printed, and the
// exit status is left to be returned.
std::variant<DemoOptions, ParserExit> parseOptions(std::vector<std::string> words, std::ostream& out,
                                                   std::ostream& err);

}  // namespace halvo::sim
