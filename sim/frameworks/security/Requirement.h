// The requirement language of code signing, as far as this system uses it: any number of the following, with "and"
// between them and blanks where they are shown.
//   identifier "x"          anchor apple generic          certificate leaf[subject.OU] = "T"
#pragma once

#include <functional>
#include <string_view>

#include "sim/support/CodeSignature.h"

namespace halvo::sim {

using Requirement = std::function<bool(const CodeSignature&)>;

// Empty when `source` is not in the language.
Requirement compileRequirement(std::string_view source);

}  // namespace halvo::sim
