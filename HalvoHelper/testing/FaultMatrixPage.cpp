// Prints docs/fault-matrix.md: what each fault of each call leaves. Fails, naming them, if a run breaks a promise.
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "HalvoHelper/testing/FaultJudge.h"

namespace halvo {
namespace {

constexpr const char* kIntroduction =
    R"(# What a fault leaves behind

Every call that an install or a removal makes to the file system or to a tool fails here in turn, in every way it can, and
the helper is killed there in turn. `halvo_fault_matrix` prints this page; a test compares the two.

How to read a row: the call in the first column goes wrong as the second one says, and everything else works. The third column
is the client's reply (none when the helper has gone). Then come the four parts in the order driver, broker, broker's property
list, agent's property list, each of them

| | |
|---|---|
| `old` | byte for byte what was there before |
| `new` | byte for byte what the package brings |
| `-` | not there |
| `damaged` | some of its files are missing or cut off |

and the parts in the snapshot that the install made. *Staging* is what is left of the staging directory. The last column is
what the client meets afterwards when nothing fails: for an install the replies to further installs, of which the last one puts
everything right; for a removal the reply to another one. Faults of one call with one outcome share a row.

A part is `damaged` in two cases only: the helper is killed while that very part is copied back or removed, or that very bundle
can be removed in part only. No copy that failed ever takes a good part's place.

*Half-way* means for a copy or a staged file that its last file is cut off, for a removal that one file has gone, for the
installer that it has written driver and broker. *Runs out of memory* stands for an exception: the staging directory is still
removed, nothing else happens. A tool that fails at its end has done everything before.
)";

// A reply as its code, with the reason if there is one.
std::string inShort(const std::string& reply) {
  const auto between = [&](const std::string& before) {
    const std::size_t begin = reply.find(before);
    if (begin == std::string::npos) return std::string();
    const std::size_t from = begin + before.size();
    return reply.substr(from, reply.find('"', from) - from);
  };
  const std::string reason = between(R"("reason":")");
  const std::string code = between(R"("code":")");
  if (code.empty()) return "none";
  return reason.empty() ? code : reason;
}

// The replies that come afterwards.
std::string afterwardsInShort(const FaultRun& run) {
  const std::size_t second = run.afterwards.find(", {");
  if (run.road.request == Road::Request::uninstall || second == std::string::npos) return inShort(run.afterwards);
  return inShort(run.afterwards) + ", then " + inShort(run.afterwards.substr(second));
}

// A call without the directories that every reader knows.
std::string callInShort(std::string line) {
  for (const std::string prefix : {"/var/db/halvo/", "/Library/Audio/Plug-Ins/HAL/", "/Library/PrivilegedHelperTools/",
                                   "/Library/LaunchDaemons/", "/Library/LaunchAgents/", "/Users/ada/"}) {
    for (std::size_t at = line.find(prefix); at != std::string::npos; at = line.find(prefix)) {
      line.replace(at, prefix.size(), "");
    }
  }
  return line;
}

std::string outcomeOf(const FaultRun& run) {
  const std::string parts = " | `" + run.parts + "`";
  if (run.road.request == Road::Request::uninstall) return inShort(run.reply) + parts + " | " + afterwardsInShort(run);
  return inShort(run.reply) + parts + " | `" + run.snapshot + "` | " + (run.staging == "-" ? "gone" : run.staging) +
         " | " + afterwardsInShort(run);
}

struct Row {
  std::size_t number;
  std::string call;
  std::string faults;
  std::string outcome;
};

// The runs of one fault each, those of one call and one outcome together.
std::vector<Row> rowsOf(const std::vector<FaultRun>& runs) {
  std::vector<Row> rows;
  for (const FaultRun& run : runs) {
    const auto& [number, fault] = *run.faults.begin();
    const std::string outcome = outcomeOf(run);
    Row* same = nullptr;
    for (Row& row : rows) {
      if (row.number == number && row.outcome == outcome) same = &row;
    }
    if (same == nullptr) {
      rows.push_back({number, callInShort(run.calls.at(number).line), faultName(fault), outcome});
    } else {
      same->faults += std::string("; ") + faultName(fault);
    }
  }
  return rows;
}

void printTable(const Road& road, const std::vector<FaultRun>& runs) {
  const bool install = road.request == Road::Request::install;
  std::cout << "| Call | Goes wrong | Reply | Parts |"
            << (install ? " Snapshot | Staging | Next installs |" : " Next removal |") << "\n|---|---|---|---|"
            << (install ? "---|---|---|" : "---|") << '\n';
  std::string last;
  for (const Row& row : rowsOf(runs)) {
    const std::string name = std::to_string(row.number + 1) + ". `" + row.call + "`";
    std::cout << "| " << (name == last ? "" : name) << " | " << row.faults << " | " << row.outcome << " |\n";
    last = name;
  }
}

// All single faults of a road. Every promise that a run breaks is printed and counted.
std::vector<FaultRun> runsOf(const Road& road, int& breaches) {
  std::vector<FaultRun> runs;
  for (const Faults& faults : singleFaults(road)) {
    runs.push_back(halvoRunInMemory(road, faults));
    for (const std::string& breach : breachesOf(runs.back())) {
      std::cerr << road.name << ", " << faultsInWords(runs.back()) << ": " << breach << '\n';
      ++breaches;
    }
  }
  return runs;
}

void printCounts(int& breaches) {
  std::cout << "\n## Cases\n\nEach is run and compared with what is promised; on the first nine rows those of "
               "one\nfault on real files too.\n\n"
               "| Request and machine | Calls | One fault | Two faults |\n|---|--:|--:|--:|\n";
  std::size_t ones = 0;
  std::size_t twos = 0;
  for (const Road& road : allRoads()) {
    const std::size_t one = runsOf(road, breaches).size();
    const std::size_t two = road.inPairs ? pairsOfFaults(road).size() : 0;
    std::cout << "| " << road.name << " | " << halvoRunInMemory(road, {}).calls.size() << " | " << one << " | "
              << (road.inPairs ? std::to_string(two) : "") << " |\n";
    ones += one;
    twos += two;
  }
  std::cout << "| All | | " << ones << " | " << twos << " |\n";
}

int printPage() {
  int breaches = 0;
  const std::vector<Road> roads = allRoads();
  std::cout << kIntroduction << "\n## An install over an older version\n\n";
  printTable(roads[0], runsOf(roads[0], breaches));
  std::cout << "\n## An install over an older version whose installer fails at its end\n\n";
  printTable(roads[1], runsOf(roads[1], breaches));
  std::cout << "\n## A removal\n\n";
  printTable(roads[2], runsOf(roads[2], breaches));
  printCounts(breaches);
  return breaches == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace halvo

int main() { return halvo::printPage(); }
