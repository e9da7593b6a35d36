// The stand-ins for launchctl and killall, without the logging and scripted faults that all stand-in tools share.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "sim/launchd/ControlClient.h"

namespace halvo::sim {

// launchctl bootstrap DOMAIN PLIST..., bootout JOB, print TARGET. Answers the exit status, which is launchd's own;
// 64 for wrong usage.
int launchctlCommand(const ControlClient& launchd, const std::vector<std::string>& arguments, std::ostream& out,
                     std::ostream& err);

// killall NAME...: 0 when each name belonged to a running job, 1 otherwise.
int killallCommand(const ControlClient& launchd, const std::vector<std::string>& arguments, std::ostream& err);

}  // namespace halvo::sim
