// A machine with real rules, in memory or on the disk, on which installs and removals run one after the other and fail.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/removal/UninstallSequence.h"
#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/testing/FileTree.h"

namespace halvo {

// In the order in which the machine names them.
inline constexpr std::array<const char*, 4> kMachineParts = {kDriverBundlePath, kBrokerPath, kBrokerPlistPath,
                                                             kDaemonPlistPath};

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
  UninstallResult uninstall();

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
  std::vector<std::int64_t> guiUids;
  std::vector<std::string> log;  // what the runs wrote

  // What stands between the sequences and the machine: nothing at first.
  std::function<std::shared_ptr<const PrivilegedFS>(std::shared_ptr<const PrivilegedFS>)> aroundFiles =
      [](std::shared_ptr<const PrivilegedFS> files) { return files; };
  std::function<std::shared_ptr<const ProcessRunner>(std::shared_ptr<const ProcessRunner>)> aroundTools =
      [](std::shared_ptr<const ProcessRunner> tools) { return tools; };

 private:
  [[nodiscard]] std::shared_ptr<const ProcessRunner> tools() const;
  [[nodiscard]] std::string contentsOfPart(const std::string& path) const;

  std::shared_ptr<const FileTree> tree_;
  std::set<std::string> known_;  // every contents that was ever written
};

}  // namespace halvo
