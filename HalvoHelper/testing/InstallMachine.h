// A machine with real rules, in memory or on the disk, on which installs run one after the other and fail.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/testing/FileTree.h"

namespace halvo {

// Starts with all four parts installed, each file of them with the contents `old`, and with a package at
// /Users/ada/Halvo.pkg. Contents are called by their first line.
class InstallMachine {
 public:
  explicit InstallMachine(std::shared_ptr<const FileTree> tree, const std::string& old = "old",
                          const std::string& package = "package");

  // Installs a good package, whose installer writes `newContents` into the first `installedParts` of the driver,
  // broker, broker's property list and agent's property list, in that order, does `installerAlso`, and then exits with
  // `installerStatus`. Each part that is written is a step.
  InstallResult install();

  // The contents of the four parts in the same order: "old old new -". "-" is an absent part, and "damaged" one that is
  // not, file by file and byte for byte, what was there at first or what an installer writes.
  [[nodiscard]] std::string parts() const;
  // The same of a snapshot.
  [[nodiscard]] std::string snapshot(std::int64_t name) const;
  void removeParts() const;

  int installerStatus = 0;
  int installedParts = 4;
  std::string newContents = "new";
  std::function<void()> installerAlso = [] {};
  std::int64_t now = 1'771'000'000;

 private:
  [[nodiscard]] std::string contentsOfPart(const std::string& path) const;

  std::shared_ptr<const FileTree> tree_;
  std::set<std::string> known_;  // every contents that was ever written
};

}  // namespace halvo
