// A Mac on which nothing is wrong, as plain data, and the one thing that a test spoils about it.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "client/doctor/Examination.h"
#include "client/doctor/Findings.h"

namespace halvo {

// Version 1.2.0 is installed, 501 is logged in, one complete snapshot of 1.1.0 is two days old, nothing was refused.
[[nodiscard]] Examination healthyMac();

[[nodiscard]] Part& partAt(Examination& seen, std::string_view path);

struct DamageRow {
  const char* name;
  void (*spoil)(Examination& seen);
  Finding finding;
};

[[nodiscard]] Findings findingsAfter(const DamageRow& row);

void PrintTo(const Finding& finding, std::ostream* out);

}  // namespace halvo
