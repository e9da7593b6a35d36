// What each fault may leave on the machine, as the documentation promises it, worked out from the faults alone.
#pragma once

#include <string>
#include <vector>

#include "HalvoHelper/testing/FaultMatrix.h"

namespace halvo {

// Everything about the run that differs from what is promised, in words; empty if nothing does.
[[nodiscard]] std::vector<std::string> breachesOf(const FaultRun& run);

// The faults of the run, in words: "exists /a fails, then removeTree /b fails half-way".
[[nodiscard]] std::string faultsInWords(const FaultRun& run);

}  // namespace halvo
