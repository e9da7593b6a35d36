// Finds the system tools that the helper runs.
#pragma once

#include <optional>
#include <vector>

#include "client/doctor/Examination.h"
#include "platform/ProcessList.h"

namespace halvo {

// Of these processes the tools that root's helper started, also those that outlived it: launchd takes them over.
[[nodiscard]] std::vector<Tool> toolsOfTheHelper(const std::vector<ProcessEntry>& processes);

}  // namespace halvo
