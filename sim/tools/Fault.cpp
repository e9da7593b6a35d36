#include "sim/tools/Fault.h"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "sim/support/StateRoot.h"
#include "sim/tools/CallLog.h"

namespace halvo::sim {
namespace {

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
  return line.call == 0 || CallLog::count(tool, line.verb) + 1 == line.call;
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

void hangUntilKilled() {
  for (;;) ::pause();
}

}  // namespace halvo::sim
