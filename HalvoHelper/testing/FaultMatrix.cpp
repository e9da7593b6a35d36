#include "HalvoHelper/testing/FaultMatrix.h"

#include <array>
#include <new>
#include <sstream>
#include <utility>

namespace halvo {
namespace {

// Belongs to somebody else, and no request may touch it.
constexpr std::array<const char*, 4> kBystanders = {"/Users/ada/Halvo.pkg", "/Library/LaunchDaemons/com.example.plist",
                                                    "/Library/Audio/Plug-Ins/HAL/Other.driver/Contents/Info.plist",
                                                    "/var/db/other"};
constexpr std::array<const char*, 5> kOwnOthers = {kRecentSnapshot, kStaleSnapshot, kRuntimeDirectory, kDaemonLock,
                                                   kDatabase};

using Listings = std::map<std::string, std::vector<std::string>>;

void furnish(const FileTree& tree) {
  for (const char* path : kBystanders) tree.write(path, "package");
  tree.write(std::string(kRuntimeDirectory) + "/broker.sock", "runtime");
  tree.write(kDaemonLock, "lock");
  for (const std::string snapshot : {kRecentSnapshot, kStaleSnapshot}) tree.write(snapshot + "/halvo-broker", "older");
  tree.setDaysAgo(kRecentSnapshot, 3);
  tree.setDaysAgo(kStaleSnapshot, 9);
}

void takeAwayParts(const FileTree& tree, const std::string& partsThen) {
  std::istringstream words(partsThen);
  for (const char* path : kMachineParts) {
    std::string word;
    words >> word;
    if (word == "-") tree.fs()->removeTree(path);
  }
}

Listings listingsOf(const FileTree& tree) {
  Listings listings;
  for (const char* path : kBystanders) listings[path] = tree.listing(path);
  for (const char* path : kOwnOthers) listings[path] = tree.listing(path);
  return listings;
}

std::map<std::string, std::string> changesSince(const Listings& before, const FileTree& tree) {
  std::map<std::string, std::string> words;
  for (const auto& [path, listing] : listingsOf(tree)) {
    words[path] = listing.empty() ? "-" : listing == before.at(path) ? "whole" : "part";
  }
  return words;
}

std::string stagingOf(const FileTree& tree) {
  if (!tree.fs()->exists(kStagingRoot)) return "-";
  return tree.fs()->exists(kStagedPackage) ? "package" : "empty";
}

std::string replyTo(Road::Request request, InstallMachine& machine) {
  return request == Road::Request::install ? halvoInstallResultJSON(machine.install())
                                           : halvoUninstallResultJSON(machine.uninstall());
}

// Puts the script between the machine and the sequences. A tool that does half its work is an installer that has
// written two of the parts.
void useScript(InstallMachine& machine, const std::shared_ptr<const FileTree>& tree,
               const std::shared_ptr<FaultScript>& script) {
  const auto half = [&machine](const std::function<void()>& act) {
    machine.installedParts = 2;
    act();
    machine.installedParts = 4;
  };
  machine.aroundFiles = [=](const auto&) { return std::make_shared<FaultyPrivilegedFS>(tree, script); };
  machine.aroundTools = [=](const auto& tools) { return std::make_shared<FaultyProcessRunner>(tools, script, half); };
}

void request(FaultRun& run, InstallMachine& machine, const std::shared_ptr<FaultScript>& script) {
  try {
    run.reply = replyTo(run.road.request, machine);
  } catch (const std::bad_alloc&) {
    run.end = FaultRun::End::ranOutOfMemory;
  } catch (const ProcessKilled&) {
  }
  if (script->processEnded) {
    run.end = FaultRun::End::killed;
    run.reply.clear();
  }
  run.calls = script->calls;
}

// The same request once more with nothing failing, and an install unless that was one that succeeded.
std::string afterwards(Road::Request request, InstallMachine& machine) {
  machine.installerStatus = 0;
  machine.newContents = "newer";
  machine.now += 1;
  const std::string again = replyTo(request, machine);
  const std::string parts = machine.parts();
  if (request == Road::Request::install && parts == "newer newer newer newer") return again + " " + parts;
  const std::string installed = replyTo(Road::Request::install, machine);
  return again + " " + parts + ", " + installed + " " + machine.parts();
}

}  // namespace

std::vector<Road> allRoads() {
  using enum Road::Request;
  struct Start {
    std::string name;
    std::string parts;
    bool inPairs;
  };
  const std::vector<Start> starts = {
      {"OverAllParts", "old old old old", true},      {"OverNothing", "- - - -", true},
      {"WithoutDriver", "- old old old", true},       {"WithoutBroker", "old - old old", false},
      {"WithoutBrokerPlist", "old old - old", false}, {"WithoutAgentPlist", "old old old -", false}};
  std::vector<Road> roads;
  for (const auto& [name, parts, inPairs] : starts) {
    roads.push_back({"Install" + name, install, 0, parts, inPairs});
    roads.push_back({"RollBack" + name, install, 1, parts, inPairs});
    roads.push_back({"Uninstall" + name, uninstall, 0, parts, inPairs});
  }
  return roads;
}

FaultRun halvoRunWith(const Road& road, const Faults& faults, std::shared_ptr<const FileTree> tree,
                      const std::function<void()>& look) {
  FaultRun run;
  run.road = road;
  run.faults = faults;
  InstallMachine machine(tree);
  furnish(*tree);
  takeAwayParts(*tree, road.partsThen);
  machine.guiUids = {501, 502};
  machine.installerStatus = road.installerStatus;
  const Listings before = listingsOf(*tree);
  look();

  const auto script = std::make_shared<FaultScript>();
  script->faults = faults;
  script->before = [&](const Call& call) {
    if (call.line.starts_with("run ")) run.partsAtTool[call.line] = machine.parts();
  };
  const auto aroundFiles = machine.aroundFiles;
  const auto aroundTools = machine.aroundTools;
  useScript(machine, tree, script);
  request(run, machine, script);
  look();

  run.parts = machine.parts();
  run.snapshot = machine.snapshot(machine.now);
  run.staging = stagingOf(*tree);
  run.others = changesSince(before, *tree);
  machine.aroundFiles = aroundFiles;
  machine.aroundTools = aroundTools;
  if (run.end != FaultRun::End::answered || faults.size() < 2) run.afterwards = afterwards(road.request, machine);
  return run;
}

FaultRun halvoRunInMemory(const Road& road, const Faults& faults) {
  return halvoRunWith(road, faults, std::make_shared<InMemoryTree>());
}

std::vector<Faults> oneMoreFault(const FaultRun& run) {
  std::vector<Faults> all;
  const std::size_t first = run.faults.empty() ? 0 : run.faults.rbegin()->first + 1;
  for (std::size_t call = first; call < run.calls.size(); ++call) {
    for (const Fault fault : faultsOf(run.calls[call])) {
      all.push_back(run.faults);
      all.back()[call] = fault;
    }
  }
  return all;
}

std::vector<Faults> singleFaults(const Road& road) { return oneMoreFault(halvoRunInMemory(road, {})); }

std::vector<Faults> pairsOfFaults(const Road& road) {
  std::vector<Faults> all;
  for (const Faults& single : singleFaults(road)) {
    for (Faults& pair : oneMoreFault(halvoRunInMemory(road, single))) all.push_back(std::move(pair));
  }
  return all;
}

}  // namespace halvo
