// What halvo-app doctor prints: a screen for people, and the same for programs.
#pragma once

#include <string>
#include <string_view>

#include "client/doctor/Examination.h"
#include "client/doctor/Findings.h"

namespace halvo {

// Lines of at most 80 characters while numbers are of a usual size; every text that comes from elsewhere is made
// visible.
[[nodiscard]] std::string textReport(const Examination& seen, const Findings& findings, std::string_view date);

// One JSON object on one line, as docs/doctor.md describes it; `status` is that of the process.
[[nodiscard]] std::string jsonReport(const Examination& seen, const Findings& findings, std::string_view date,
                                     int status);

}  // namespace halvo
