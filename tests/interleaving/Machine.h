// The machine that requests meet on: files in memory, and tools that read and write what really lies there. Every call
// of a collaborator is a boundary and is watched.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HalvoHelper/system/AudioDeviceEnumerator.h"
#include "HalvoHelper/system/PrivilegedFS.h"
#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/testing/InMemoryPrivilegedFS.h"

namespace halvo::interleaving {

// What must never happen, whatever the schedule.
enum class Rule {
  verifiedBytes,  // bytes reach the installer only when the same run had them verified
  staging,        // nobody removes or replaces the staging directory of a run that is under way
  snapshot,       // nor its snapshot
  wholeRuns,      // the process does not end while a run that changes the machine is under way
  authorized,     // who was refused changes nothing
  noInstall,      // the installer does not run: what good packages break, and evil ones must not
};

constexpr const char* kGoodPackage = "/Users/ada/good.pkg";
constexpr const char* kFailingPackage = "/Users/ada/failing.pkg";  // trusted; its installer fails half way
constexpr const char* kEvilPackage = "/Users/ada/evil.pkg";
constexpr const char* kMissingPackage = "/Users/ada/missing.pkg";

class Machine {
 public:
  // With a version of all four parts installed, a package of each kind, and an application bundle at that path.
  explicit Machine(const std::string& appBundle, std::set<Rule> rules);

  // What a call does before it acts. False: it does not act.
  bool begin(const std::string& call);

  // That the run of the request that calls is over, or that it was refused before it began.
  void endRun();
  void refuse();
  void endProcess();

  void aboutToReplace(const std::string& path);
  void madeStaging() { run().staging = true; }
  void removedStaging() { run().staging = false; }
  void madeSnapshot() { run().snapshot = true; }
  ProcessResult checkSignature(const std::string& package);
  ProcessResult install(const std::string& package);

  [[nodiscard]] std::string state() const;
  [[nodiscard]] std::optional<std::string> violation() const { return violation_; }
  [[nodiscard]] bool ended() const { return ended_; }

  // The calls so far, each with the request that made it.
  [[nodiscard]] const std::vector<std::pair<std::size_t, std::string>>& calls() const { return calls_; }

  InMemoryPrivilegedFS files;

 private:
  struct Run {
    bool begun = false;
    bool over = false;
    bool refused = false;
    bool staging = false;
    bool snapshot = false;
    std::optional<std::string> verified;  // the bytes that the last check found good
  };

  Run& run();
  void breaks(Rule rule, const std::string& what);

  std::set<Rule> rules_;
  std::map<std::size_t, Run> runs_;
  std::optional<std::string> violation_;
  bool ended_ = false;
  std::vector<std::pair<std::size_t, std::string>> calls_;
};

class WatchedFS final : public PrivilegedFS {
 public:
  explicit WatchedFS(std::shared_ptr<Machine> machine) : machine_(std::move(machine)) {}

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
  std::shared_ptr<Machine> machine_;
};

class WatchedTools final : public ProcessRunner {
 public:
  explicit WatchedTools(std::shared_ptr<Machine> machine) : machine_(std::move(machine)) {}
  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override;

 private:
  std::shared_ptr<Machine> machine_;
};

class WatchedAudio final : public AudioDeviceEnumerator {
 public:
  std::vector<bool> runningSomewhereFlags() const override;
};

}  // namespace halvo::interleaving
