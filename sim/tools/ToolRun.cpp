#include "sim/tools/ToolRun.h"

#include <sysexits.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <regex>
#include <stdexcept>

#include "sim/support/Files.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

struct Call {
  std::string_view tool;
  const std::vector<std::string>& arguments;
  std::int64_t began;
};

std::string callLine(const Call& call, int status) {
  const nlohmann::ordered_json line = {{"time", universalTime()},       {"began", call.began},
                                       {"ended", uptimeMicroseconds()}, {"tool", call.tool},
                                       {"arguments", call.arguments},   {"status", status}};
  // An argument need not be UTF-8, and a call with such an argument is worth a line too.
  return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void record(const Call& call, int status) {
  const std::string path = stateRoot() / "calls.jsonl";
  if (appendLine(path, callLine(call, status))) return;
  std::cerr << call.tool << ": the call could not be recorded in " << path << ": " << std::strerror(errno) << "\n";
}

// How many runs of the tool are recorded; with a `verb`, those whose first argument it was.
int recordedRuns(std::string_view tool, std::string_view verb) {
  std::ifstream file(stateRoot() / "calls.jsonl");
  int found = 0;
  for (std::string line; std::getline(file, line);) {
    const auto call = nlohmann::json::parse(line, nullptr, false);
    if (call.is_discarded() || call.at("tool") != tool) continue;
    const auto& arguments = call.at("arguments");
    if (verb.empty() || (!arguments.empty() && arguments.front() == verb)) ++found;
  }
  return found;
}

// A line of the file: a fault, and the runs that it is for.
struct FaultLine {
  Fault fault;
  std::string verb;  // empty for any
  int call = 0;      // 0 for any
};

// Nothing for a line of another form than the header says.
std::optional<FaultLine> readFaultLine(const std::string& text) {
  constexpr int kLargestStatus = 255;
  static const std::regex form(R"(\s*(?:hang|(\d{1,3})(\s+after)?)(?:\s+on\s+(\S+))?(?:\s+call\s+([1-9]\d{0,5}))?\s*)");
  std::smatch part;
  if (!std::regex_match(text, part, form)) return std::nullopt;
  FaultLine line{.fault = {.kind = Fault::Kind::hang}, .verb = part[3], .call = 0};
  if (part[1].matched) {
    line.fault = {part[2].matched ? Fault::Kind::exitAfterActing : Fault::Kind::exit, std::stoi(part[1])};
  }
  if (part[4].matched) line.call = std::stoi(part[4]);
  return line.fault.status <= kLargestStatus ? std::optional(line) : std::nullopt;
}

bool isFor(const FaultLine& line, std::string_view tool, const std::vector<std::string>& arguments) {
  if (!line.verb.empty() && (arguments.empty() || arguments.front() != line.verb)) return false;
  return line.call == 0 || recordedRuns(tool, line.verb) + 1 == line.call;
}

constexpr int kHasNoEnd = -1;

int actUnderFault(const std::optional<Fault>& fault, const std::function<int()>& act) {
  if (!fault) return act();
  if (fault->kind == Fault::Kind::exitAfterActing) act();
  return fault->status;
}

}  // namespace

std::optional<Fault> scriptedFault(std::string_view tool, const std::vector<std::string>& arguments) {
  const std::filesystem::path path = stateRoot() / "faults" / std::filesystem::path(tool).filename();
  std::ifstream file(path);
  for (std::string text; std::getline(file, text);) {
    if (text.find_first_not_of(" \t\r") == std::string::npos) continue;
    const auto line = readFaultLine(text);
    if (!line) {
      throw std::runtime_error(path.string() + ": \"" + text +
                               "\" is none of: STATUS [after] [on WORD] [call N], hang [on WORD] [call N]");
    }
    if (isFor(*line, tool, arguments)) return line->fault;
  }
  return std::nullopt;
}

int runTool(std::string_view tool, const std::vector<std::string>& arguments, const ToolStreams& streams,
            const std::function<int()>& act) {
  const Call call{tool, arguments, uptimeMicroseconds()};
  int status = EX_SOFTWARE;
  try {
    const std::optional<Fault> fault = scriptedFault(tool, arguments);
    if (fault && fault->kind == Fault::Kind::hang) {
      record(call, kHasNoEnd);
      for (;;) ::pause();
    }
    status = actUnderFault(fault, act);
  } catch (const std::exception& problem) {
    streams.err << problem.what() << "\n";
  }
  record(call, status);
  return status;
}

}  // namespace halvo::sim
