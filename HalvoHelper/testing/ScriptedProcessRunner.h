// A process runner that starts nothing: it notes what it was asked to run and answers from a script.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/testing/CallRecorder.h"

namespace halvo {

// For one thread at a time.
class ScriptedProcessRunner final : public ProcessRunner {
 public:
  // With a recorder, each run is also one line of it: "run TOOL ARGUMENT ...".
  explicit ScriptedProcessRunner(std::shared_ptr<CallRecorder> recorder = nullptr);

  // Takes the next reply; when none is left, the tool succeeds without a word.
  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override;

  mutable std::deque<ProcessResult> replies;           // those not yet given
  mutable std::vector<std::vector<std::string>> runs;  // the tool, then its arguments

 private:
  std::shared_ptr<CallRecorder> recorder_;
};

}  // namespace halvo
