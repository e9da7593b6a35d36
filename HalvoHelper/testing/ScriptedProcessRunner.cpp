#include "HalvoHelper/testing/ScriptedProcessRunner.h"

#include <utility>

namespace halvo {
namespace {

std::string lineFor(const std::vector<std::string>& words) {
  std::string line = "run";
  for (const std::string& word : words) line += " " + word;
  return line;
}

}  // namespace

ScriptedProcessRunner::ScriptedProcessRunner(std::shared_ptr<CallRecorder> recorder) : recorder_(std::move(recorder)) {}

ProcessResult ScriptedProcessRunner::run(const std::string& tool, const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{tool};
  words.insert(words.end(), arguments.begin(), arguments.end());
  if (recorder_) recorder_->calls.push_back(lineFor(words));
  runs.push_back(std::move(words));
  if (replies.empty()) return {};
  ProcessResult reply = std::move(replies.front());
  replies.pop_front();
  return reply;
}

}  // namespace halvo
