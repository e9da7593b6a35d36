#include "sim/demo/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "sim/demo/Walk.h"

namespace halvo::sim {
namespace {

constexpr int kUsageError = 64;

std::string notEmpty(const std::string& word) { return word.empty() ? "is empty" : ""; }

}  // namespace

std::variant<DemoOptions, ParserExit> parseOptions(std::vector<std::string> words, std::ostream& out,
                                                   std::ostream& err) {
  DemoOptions options;
  CLI::App app{"Walks through the life of the product in a simulated Mac", "halvo-demo"};
  app.add_option("--only", options.only, "Show this step alone; several with commas between")
      ->delimiter(',')
      ->check(CLI::Range(1, stepCount()));
  app.add_flag("--quiet", options.quiet, "One line per step");
  app.add_option("--report", options.report, "Write a page, DIR/index.html")->type_name("DIR")->check(notEmpty);
  app.add_option("--trace", options.trace, "Write a trace in Chrome's form")->type_name("FILE")->check(notEmpty);
  try {
    // The parser takes them from the end.
    std::ranges::reverse(words);
    app.parse(words);
  } catch (const CLI::ParseError& answer) {
    return ParserExit{app.exit(answer, out, err) == 0 ? 0 : kUsageError};
  }
  return options;
}

}  // namespace halvo::sim
