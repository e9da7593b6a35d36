// How it is worked out what a run may leave: what installs and removals have in common. For FaultJudge.cpp only.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/testing/FaultJudge.h"

namespace halvo {

[[nodiscard]] std::vector<std::string> breachesOfInstall(const FaultRun& run);
[[nodiscard]] std::vector<std::string> breachesOfUninstall(const FaultRun& run);

[[nodiscard]] std::vector<std::string> wordsOf(const std::string& line);
[[nodiscard]] std::string joinedWords(const std::vector<std::string>& words);

inline const std::string kAbsentWord = "-";
inline const std::string kInstalledReply = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
inline const std::string kBrokerBootout = "run /bin/launchctl bootout system/com.halvo.broker";
inline const std::string kAudioRestart = "run /usr/bin/killall coreaudiod";

inline bool isOneOf(std::optional<Fault> fault, std::initializer_list<Fault> faults) {
  return fault && std::ranges::find(faults, *fault) != faults.end();
}

inline bool happensHalfway(std::optional<Fault> fault) {
  return isOneOf(fault, {Fault::failsHalfway, Fault::diesHalfway});
}

// Whether half of the part can be gone; the others are one file each.
inline bool isBundle(std::size_t part) { return part == 0; }

// What both judges ask of a run.
class FaultPromises {
 public:
  explicit FaultPromises(const FaultRun& run) : run_(run), then_(wordsOf(run.road.partsThen)) {}

 protected:
  [[nodiscard]] bool called(const std::string& line) const {
    return std::ranges::any_of(run_.calls, [&](const Call& call) { return call.line == line; });
  }
  [[nodiscard]] std::optional<Fault> faultAt(const std::string& line) const {
    for (const auto& [number, fault] : run_.faults) {
      if (number < run_.calls.size() && run_.calls[number].line == line) return fault;
    }
    return std::nullopt;
  }
  [[nodiscard]] bool done(const std::string& line) const { return called(line) && !faultAt(line); }
  [[nodiscard]] bool answered() const { return run_.end == FaultRun::End::answered; }

  // What a removal of a tree leaves.
  [[nodiscard]] std::string afterRemovalOf(const std::string& path) const {
    const std::string line = "removeTree " + path;
    if (!called(line)) return "whole";
    if (!faultAt(line)) return "-";
    return happensHalfway(faultAt(line)) ? "part" : "whole";
  }

  void expect(const std::string& what, const std::string& is, const std::string& promised) {
    if (is != promised) breaches_.push_back(what + " is \"" + is + "\", promised is \"" + promised + "\"");
  }

  const FaultRun& run_;
  std::vector<std::string> then_;
  std::vector<std::string> breaches_;
};

}  // namespace halvo
