// What `launchctl print` shows.
#pragma once

#include <string>

#include "sim/launchd/JobTable.h"

namespace halvo::sim {

std::string describeJob(const Job& job);
std::string describeDomain(const std::string& domain, const JobTable& jobs);

}  // namespace halvo::sim
