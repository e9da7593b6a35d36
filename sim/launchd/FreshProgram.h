// Turning a child process into a program that starts as launchd starts programs.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

// Between fork and exec: default signal dispositions, an empty signal mask, and an end with the parent. `program`
// without a slash is looked for in PATH. Answers the error when it cannot be run.
int becomeFreshProgram(const std::string& program, std::vector<std::string> arguments,
                       std::vector<std::string> environment);

}  // namespace halvo::sim
