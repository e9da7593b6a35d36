#include "sim/tools/ToolRun.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>

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
  return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool appendWhole(const std::string& path, const std::string& line) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor < 0) return false;
  // Users run these tools too, and the umask of whoever ran the first one must not shut them out. Only the owner may
  // change the mode, and once is enough.
  static_cast<void>(::fchmod(descriptor, 0666));
  const ssize_t written = ::write(descriptor, line.data(), line.size());
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return written == static_cast<ssize_t>(line.size());
}

void record(const Call& call, int status) {
  const std::string path = stateRoot() / "calls.jsonl";
  if (appendWhole(path, callLine(call, status))) return;
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

constexpr int kLargestStatus = 255;

std::optional<int> number(const std::string& word, int smallest, int largest) {
  int value = 0;
  const char* end = word.data() + word.size();
  const auto parsed = std::from_chars(word.data(), end, value);
  if (parsed.ec != std::errc{} || parsed.ptr != end || value < smallest || value > largest) return std::nullopt;
  return value;
}

// A line of the file: a fault, and the runs that it is for.
struct FaultLine {
  Fault fault;
  std::string verb;  // empty for any
  int call = 0;      // 0 for any
};

class LineReader {
 public:
  explicit LineReader(const std::string& line) {
    std::istringstream stream(line);
    for (std::string word; stream >> word;) words_.push_back(word);
  }

  [[nodiscard]] bool blank() const { return words_.empty(); }

  // Nothing when a word is left that has no place in a line.
  std::optional<FaultLine> read() {
    FaultLine line;
    if (take("hang")) {
      line.fault.kind = Fault::Kind::hang;
    } else if (const auto status = number(next(), 0, kLargestStatus)) {
      line.fault = {take("after") ? Fault::Kind::exitAfterActing : Fault::Kind::exit, *status};
    } else {
      return std::nullopt;
    }
    if (take("on")) line.verb = next();
    if (take("call")) line.call = number(next(), 1, 1'000'000).value_or(-1);
    return at_ == words_.size() && line.call >= 0 ? std::optional(line) : std::nullopt;
  }

 private:
  bool take(const char* word) {
    const bool there = at_ < words_.size() && words_[at_] == word;
    if (there) ++at_;
    return there;
  }
  std::string next() { return at_ < words_.size() ? words_[at_++] : "(nothing)"; }

  std::vector<std::string> words_;
  std::size_t at_ = 0;
};

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
    LineReader reader(text);
    if (reader.blank()) continue;
    const auto line = reader.read();
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
