// What the tests of launchd as a whole have in common.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "sim/launchd/testing/RunningLaunchd.h"

namespace halvo::sim {

inline constexpr const char* kDaemons = "Library/LaunchDaemons";
inline constexpr const char* kElsewhere = "elsewhere";
inline const std::string kNoThrottle = "<key>ThrottleInterval</key><integer>0</integer>";
inline const std::string kAtLoad = "<key>RunAtLoad</key><true/>";
inline const std::string kAlways = "<key>KeepAlive</key><true/>";

class LaunchdTest : public testing::Test {
 protected:
  bool runs(const std::string& label) const {
    const auto job = launchd.state("system", label);
    return job && job->pid;
  }

  RunningLaunchd launchd;
};

}  // namespace halvo::sim
