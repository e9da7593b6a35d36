// Looks for what the logs of installs and removals say was refused.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

#include "client/doctor/Disk.h"
#include "client/doctor/Examination.h"

namespace halvo {

// The last refusal among the lines of a log. Clients choose parts of the lines: they are a hint, not evidence.
[[nodiscard]] std::optional<Refusal> lastRefusal(std::string_view log, std::chrono::system_clock::time_point now);

// The log of installs and that of removals, of each the last 64 KiB.
[[nodiscard]] std::vector<LogView> collectLogs(const Disk& disk, std::chrono::system_clock::time_point now);

}  // namespace halvo
