// A machine in memory with real rules, on which installs run one after the other, fail at a chosen call or are killed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/testing/InMemoryPrivilegedFS.h"

namespace halvo {

// Starts with all four parts installed, each with the contents "old", and with a package at /Users/ada/Halvo.pkg.
class InstallMachine {
 public:
  InstallMachine();

  // Installs a good package, whose installer writes the contents "new" into the first `installedParts` of the driver,
  // broker, broker's property list and agent's property list, in that order, and then exits with `installerStatus`.
  InstallResult install();

  // Does the same but ends the process after that many steps. A step is a file system call, a tool run, or a part
  // that the installer writes.
  void installKilledAfter(std::size_t steps);

  // The contents of the four parts in the same order, "-" for an absent one: "old old new -".
  [[nodiscard]] std::string parts() const;
  // The same of a snapshot.
  [[nodiscard]] std::string snapshot(std::int64_t name) const;
  void removeParts();

  std::shared_ptr<InMemoryPrivilegedFS> fs = std::make_shared<InMemoryPrivilegedFS>();
  int installerStatus = 0;
  int installedParts = 4;
  std::string newContents = "new";
  std::int64_t now = 1'771'000'000;
};

}  // namespace halvo
