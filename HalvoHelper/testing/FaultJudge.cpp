#include "HalvoHelper/testing/FaultJudge.h"

#include <iterator>
#include <sstream>

#include "HalvoHelper/testing/FaultJudges.h"

namespace halvo {

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

std::string joinedWords(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::vector<std::string> breachesOf(const FaultRun& run) {
  return run.road.request == Road::Request::install ? breachesOfInstall(run) : breachesOfUninstall(run);
}

std::string faultsInWords(const FaultRun& run) {
  std::string words;
  for (const auto& [number, fault] : run.faults) {
    words += (words.empty() ? "" : ", then ") + run.calls.at(number).line + " " + faultName(fault);
  }
  return words.empty() ? "no fault" : words;
}

}  // namespace halvo
