// What a helper that was killed may leave behind, and what it may not.
#pragma once

#include <string>
#include <vector>

#include "tests/soaking/Soak.h"

namespace halvo::soak {

// How one of the product's four components stands against those of the installation before and of the one begun.
enum class Standing { old, fresh, absent, partOfOld, other };

// In the order of the driver, the broker, its property list, and the agent's.
std::vector<Standing> standings(const sim::TreeSnapshot& now, const sim::TreeSnapshot& before,
                                const sim::TreeSnapshot& after);

std::string describe(const std::vector<Standing>& standings);

// A tool that is still running, by its name in the census.
bool isTool(const std::string& process);

// What a machine holds whose installation is whole and which has nothing to do.
struct Rest {
  std::vector<std::string> processes;  // sorted names
  int launchdDescriptors = 0;
  int helperDescriptors = 0;
  int helperThreads = 0;
  std::vector<std::string> database;  // what lies in /var/db/halvo

  bool operator==(const Rest&) const = default;
};

// Asks when the tools have ended.
Rest restOf(SoakMachine& soak);

// A violation, with `where` in its text, when the machine holds something else.
void requireSame(const Rest& expected, const Rest& found, const std::string& where);

}  // namespace halvo::soak
