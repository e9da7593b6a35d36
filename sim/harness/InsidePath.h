// Where a path of the simulated machine lies on the host.
#pragma once

#include <filesystem>
#include <string_view>

namespace halvo::sim {

enum class LastPart { kept, followed };

// Links on the way are resolved as inside the machine, where "/" is its folder; so is a link at the very end if asked
// for. What does not exist is appended as it is. Never leaves the machine.
std::filesystem::path hostPath(const std::filesystem::path& root, std::string_view inside, LastPart lastPart);

}  // namespace halvo::sim
