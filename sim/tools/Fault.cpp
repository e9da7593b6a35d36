#include "sim/tools/Fault.h"

#include <unistd.h>

#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

constexpr int kLargestStatus = 255;

std::vector<std::string> wordsOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::optional<int> exitStatus(const std::string& word) {
  int status = 0;
  const char* end = word.data() + word.size();
  const auto parsed = std::from_chars(word.data(), end, status);
  if (parsed.ec != std::errc{} || parsed.ptr != end || status < 0 || status > kLargestStatus) return std::nullopt;
  return status;
}

std::optional<Fault> faultOf(const std::vector<std::string>& words) {
  if (words.size() == 1 && words[0] == "hang") return Fault{.kind = Fault::Kind::hang};
  const std::optional<int> status = exitStatus(words[0]);
  if (!status) return std::nullopt;
  if (words.size() == 1) return Fault{.kind = Fault::Kind::exit, .status = *status};
  if (words.size() == 2 && words[1] == "after") return Fault{.kind = Fault::Kind::exitAfterActing, .status = *status};
  return std::nullopt;
}

}  // namespace

std::optional<Fault> scriptedFault(std::string_view tool) {
  const std::filesystem::path file = stateRoot() / "faults" / tool;
  const std::vector<std::string> words = wordsOf(file);
  if (words.empty()) return std::nullopt;
  const std::optional<Fault> fault = faultOf(words);
  if (!fault) {
    throw std::runtime_error(file.string() +
                             ": write an exit status from 0 to 255, an exit status and \"after\", or \"hang\"");
  }
  return fault;
}

void hangUntilKilled() {
  for (;;) ::pause();
}

}  // namespace halvo::sim
