// What halvo-app doctor takes for wrong, and what to do about it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/doctor/Examination.h"

namespace halvo {

struct Finding {
  std::string_view code;  // stays the same whatever the texts become; docs/doctor.md lists them
  std::string text;       // what is seen
  std::string hint;       // what it means and what to do next
  bool operator==(const Finding&) const = default;
};

using Findings = std::vector<Finding>;

// Pure: the same examination has the same findings, the most urgent first. What could not be read is none.
[[nodiscard]] Findings judge(const Examination& seen);

// Its parts, each for a subject.
[[nodiscard]] Findings judgeService(const Examination& seen);
[[nodiscard]] Findings judgeRight(const Examination& seen);
[[nodiscard]] Findings judgeParts(const Examination& seen);
[[nodiscard]] Findings judgeSnapshots(const Examination& seen);
[[nodiscard]] Findings judgeOperations(const Examination& seen);

// What the person who asks may not read.
[[nodiscard]] std::vector<std::string> unreadablePlaces(const Examination& seen);

// "a folder", "a link"
[[nodiscard]] const char* wordFor(ItemKind kind);

}  // namespace halvo
