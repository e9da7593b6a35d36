// halvo-demo: walks through the product's life in a simulated Mac and compares every step with what is expected.
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "sim/demo/Options.h"
#include "sim/demo/Report.h"
#include "sim/demo/StepPrinter.h"
#include "sim/demo/Supervision.h"
#include "sim/demo/TimeLine.h"
#include "sim/demo/Walk.h"
#include "sim/support/Files.h"

namespace {

using namespace halvo::sim;

constexpr int kCannotWrite = 73;

// Told before the walk, not after it.
bool writable(const std::filesystem::path& file) {
  const std::string folder = file.has_parent_path() ? file.parent_path().string() : ".";
  if (::access(folder.c_str(), W_OK | X_OK) == 0 && !std::filesystem::is_directory(file)) return true;
  std::cerr << "demo: " << file.string() << " cannot be written\n";
  return false;
}

bool write(const std::filesystem::path& file, const std::string& text) {
  const bool written = writeWhole(file, text);
  if (!written) std::cerr << "demo: " << file.string() << " cannot be written\n";
  return written;
}

int demonstrate(const DemoOptions& options) {
  const std::filesystem::path page = options.report / "index.html";
  std::error_code ignored;  // told by writable()
  if (!options.report.empty()) std::filesystem::create_directories(options.report, ignored);
  if (!options.report.empty() && !writable(page)) return kCannotWrite;
  if (!options.trace.empty() && !writable(options.trace)) return kCannotWrite;

  using Detail = StepPrinter::Detail;
  const StepPrinter printer(std::cout, options.quiet ? Detail::verdicts : Detail::everything,
                            widthOf(STDOUT_FILENO, std::getenv("COLUMNS")));
  const std::vector<Step> steps = walk(options.only, [&](const Step& step) { printer.print(step); });
  const bool fine = printer.conclude(steps);
  if (!options.report.empty() && !write(page, reportPage(wholeFile(reportFrame()), steps))) return kCannotWrite;
  if (!options.trace.empty() && !write(options.trace, traceJSON(steps))) return kCannotWrite;
  return fine ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char* argv[]) {
  constexpr int kMachineUnavailable = 70;
  const auto options = parseOptions({argv + 1, argv + argc}, std::cout, std::cerr);
  if (const auto* exit = std::get_if<ParserExit>(&options)) return exit->status;
  return supervised([&] {
    try {
      return demonstrate(std::get<DemoOptions>(options));
    } catch (const std::exception& error) {
      std::cerr << "demo: " << error.what() << "\n";
      return kMachineUnavailable;
    }
  });
}
