// What can go wrong at a call to the file system or to a tool, and both seams with such faults in them.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/testing/FileTree.h"

namespace halvo {

enum class Fault {
  fails,            // says so and has done nothing; a question is answered with nothing
  failsCleared,     // a copy: says so, and what was at its destination has gone
  failsHalfway,     // says so and has done a part
  failsAfterwards,  // a tool: says so and has done everything
  crashes,          // a tool: a signal ends it half way
  cannotStart,      // a tool
  saysNothing,      // a tool: succeeds without a word
  throws,           // no memory is left
  dies,             // the helper's process ends before the call does anything
  diesHalfway,      // the helper's process ends in the middle
};

// In words, as of something that was called: "fails half-way".
[[nodiscard]] const char* faultName(Fault fault);

// One call that a run made, such as "copyTree /a -> /b" or "run /usr/bin/killall coreaudiod".
struct Call {
  std::string operation;  // of the file system, or the name of the tool
  std::string line;
};

// Every way in which the call can go wrong.
[[nodiscard]] const std::vector<Fault>& faultsOf(const Call& call);

// The faults of one run, by the number of the call, from 0.
using Faults = std::map<std::size_t, Fault>;

// The calls of one run as they come, to either seam.
struct FaultScript {
  // Notes the call and answers what goes wrong with it. Throws ProcessKilled once the process has ended.
  std::optional<Fault> next(Call call);
  // Carries out the two faults after which the caller does not go on.
  void leaveAfter(Fault fault);

  Faults faults;
  std::vector<Call> calls;
  bool processEnded = false;
  std::function<void(const Call&)> before = [](const Call&) {};
};

// The file system of a tree. Its removeTree() throws nothing, since it may be called while the stack unwinds: once the
// process has ended it does nothing and answers false.
class FaultyPrivilegedFS final : public PrivilegedFS {
 public:
  FaultyPrivilegedFS(std::shared_ptr<const FileTree> tree, std::shared_ptr<FaultScript> script);

  bool exists(const std::string& path) const override;
  bool remove(const std::string& path) const override;
  bool removeTree(const std::string& path) const override;
  bool copyTree(const std::string& source, const std::string& destination) const override;
  bool stageFile(const std::string& source, const std::string& destination) const override;
  bool makeDir(const std::string& path) const override;
  std::vector<std::string> entries(const std::string& path) const override;
  std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const override;
  bool makePrivateDir(const std::string& path, int mode) const override;

 private:
  void removeLastFile(const std::string& path) const;
  void cutLastFile(const std::string& path) const;

  std::shared_ptr<const FileTree> tree_;
  std::shared_ptr<FaultScript> script_;
};

class FaultyProcessRunner final : public ProcessRunner {
 public:
  // `half` is told to do what a tool does until something ends it.
  FaultyProcessRunner(std::shared_ptr<const ProcessRunner> tools, std::shared_ptr<FaultScript> script,
                      std::function<void(const std::function<void()>& run)> half);

  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override;

 private:
  std::shared_ptr<const ProcessRunner> tools_;
  std::shared_ptr<FaultScript> script_;
  std::function<void(const std::function<void()>& run)> half_;
};

}  // namespace halvo
