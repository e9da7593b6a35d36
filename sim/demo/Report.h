// The walk as a page for people: time lines, trees before and after, and every refusal with its reason.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

// The text as a page may hold it, between tags and in quoted attributes: nothing in it is markup. What is no UTF-8, and
// control characters, which no page may hold, become U+FFFD.
std::string escaped(std::string_view text);

// The page, put together from a frame that has "@STEPS@", "@REFUSALS@", "@CONTENTS@" and "@VERDICT@" where each
// belongs. It asks the network for nothing and runs no script.
std::string reportPage(std::string_view frame, const std::vector<Step>& steps);

// The frame that belongs to this program.
std::filesystem::path reportFrame();

}  // namespace halvo::sim
