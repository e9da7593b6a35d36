// An install sequence whose every collaborator is scripted and writes into one list: file system calls, tool runs,
// audio questions, readings of the installed version, the clock and the list of users, and log lines ("log: ...").
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/testing/CallRecorder.h"
#include "HalvoHelper/testing/FixedAudioDevices.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"
#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {

// A machine with all four parts installed in version 1.0, silent, nobody logged in; a good package of version 2.0. It
// must outlive the sequences it makes.
struct InstallBench {
  InstallBench();

  [[nodiscard]] InstallSequence sequence() const;
  InstallResult run(bool acceptAudioInterruption = false) const;
  [[nodiscard]] const std::vector<std::string>& calls() const { return recorder->calls; }

  std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
  std::shared_ptr<ScriptedPrivilegedFS> fs = std::make_shared<ScriptedPrivilegedFS>(recorder);
  std::shared_ptr<ScriptedProcessRunner> runner = std::make_shared<ScriptedProcessRunner>(recorder);
  std::shared_ptr<FixedAudioDevices> audio = std::make_shared<FixedAudioDevices>(std::vector<bool>{}, recorder);

  // What each reading finds, in order; the last one stays.
  mutable std::deque<std::optional<std::string>> installedVersions = {"1.0"};
  std::string manifest = R"({"driver_version":"2.0"})";
  std::int64_t now = 1'771'000'000;
  std::vector<std::int64_t> guiUids;
};

}  // namespace halvo
