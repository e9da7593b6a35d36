// Every fault of every call that an install or a removal makes, alone and two by two, and what each leaves on a
// machine. The calls are those that a run without the fault makes, whatever they are.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "HalvoHelper/testing/Faults.h"
#include "HalvoHelper/testing/InstallMachine.h"

namespace halvo {

// What is asked of which machine.
struct Road {
  enum class Request { install, uninstall };

  std::string name;
  Request request;
  int installerStatus;    // of an installer that has written all parts
  std::string partsThen;  // at the start, as the machine names them: "old - old old"
  bool inPairs;           // whether two faults at a time are tried too
};

// Every road that is tried: three requests (a good install, one whose installer fails at its end, a removal) on a
// machine with all parts, without any, and without each one of them. Pairs are tried on the first three machines.
[[nodiscard]] std::vector<Road> allRoads();

// What a run left, and what became of it.
struct FaultRun {
  enum class End { answered, ranOutOfMemory, killed };

  Road road;
  Faults faults;
  std::vector<Call> calls;
  End end = End::answered;
  std::string reply;     // empty if there was none
  std::string parts;     // as the machine names them
  std::string snapshot;  // the same
  std::string staging;   // "-", "empty" or "package"
  // What else lies on the machine, by path: "whole", "-" or "part".
  std::map<std::string, std::string> others;
  std::map<std::string, std::string> partsAtTool;  // the parts when a tool started, by the line of its call
  std::string afterwards;  // the replies and parts of the same request without faults, and of an install
};

// The tree must be empty. `look` sees it before and after the request.
[[nodiscard]] FaultRun halvoRunWith(
    const Road& road, const Faults& faults, std::shared_ptr<const FileTree> tree,
    const std::function<void()>& look = [] {});
[[nodiscard]] FaultRun halvoRunInMemory(const Road& road, const Faults& faults);

// Every way in which one call of the run can go wrong in addition, after those that already do.
[[nodiscard]] std::vector<Faults> oneMoreFault(const FaultRun& run);
// Each fault of the road alone, or each pair: the second one happens to a call that is made in spite of the first.
[[nodiscard]] std::vector<Faults> singleFaults(const Road& road);
[[nodiscard]] std::vector<Faults> pairsOfFaults(const Road& road);

// Paths and names that both the runs and their judgement speak of.
inline constexpr const char* kStagingRoot = "/var/db/halvo/install-staging";
inline constexpr const char* kStagedPackage = "/var/db/halvo/install-staging/incoming.pkg";
inline constexpr const char* kSnapshotOfRun = "/var/db/halvo/install-rollback/1771000000";
inline constexpr const char* kRecentSnapshot = "/var/db/halvo/install-rollback/1770700000";
inline constexpr const char* kStaleSnapshot = "/var/db/halvo/install-rollback/1770000000";
inline constexpr const char* kRuntimeDirectory = "/private/var/run/halvo";
inline constexpr const char* kDaemonLock = "/private/var/tmp/halvo-daemon.lock";
inline constexpr const char* kDatabase = "/var/db/halvo";

}  // namespace halvo
