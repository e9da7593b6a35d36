// Removes the product's system-wide parts: agents, audio driver, broker, runtime and database directories, receipt.
// The application bundle and the helper itself are removed by requests of their own.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/removal/UninstallResult.h"
#include "HalvoHelper/system/AudioActivity.h"
#include "HalvoHelper/system/Launchctl.h"
#include "HalvoHelper/system/PrivilegedFS.h"
#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

// Built for one request, run once. Harmless on a machine where nothing is installed.
struct UninstallSequence {
  std::shared_ptr<const PrivilegedFS> fs;
  Launchctl launchctl;
  std::shared_ptr<const ProcessRunner> runner;
  AudioActivity audio;
  std::function<std::vector<std::int64_t>()> activeGuiUids;  // called once per run
  std::string guiAppPath;                                    // reported back on success
  std::string logPath;                                       // reported back when something is left
  std::function<void(const std::string& line)> log;

  // No step's failure stops the run: everything is attempted, and only what is left on disk at the end decides. What
  // was removed stays removed. Blocks until every tool it starts has ended.
  UninstallResult run(bool acceptAudioInterruption) const;

 private:
  void removeAgents() const;
  void removeDriver() const;
  void removeBroker() const;
  void removeRecords() const;
  UninstallResult judgeLeftovers() const;
};

}  // namespace halvo
