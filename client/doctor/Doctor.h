// halvo-app doctor: looks at a Mac from the outside, changes nothing, and says what is wrong and what to do.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <vector>

#include "HalvoHelper/security/AdminRight.h"
#include "client/CommandLine.h"
#include "client/Conversation.h"
#include "client/ExitStatus.h"
#include "client/doctor/Disk.h"
#include "platform/ProcessList.h"

namespace halvo {

// Where it looks besides asking the helper.
struct DoctorSources {
  Disk disk = Disk();
  std::function<std::optional<AdminRightDefinition>()> readRight = halvoReadAdminRight;
  std::function<std::optional<std::vector<ProcessEntry>>()> processes = halvoRunningProcesses;
  std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
};

// Prints a report. Without a --timeout it waits fifteen seconds for each of the two replies. The status is kNoHelper
// when the helper does not answer as it should, else `refused` when something is found, else `success`.
ExitStatus runDoctor(const CommandLine& command, Conversation& conversation, std::ostream& out,
                     const DoctorSources& sources = {});

}  // namespace halvo
