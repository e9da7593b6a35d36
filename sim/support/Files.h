// Files that are read and written at once, by several processes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

// All bytes of the file, or those up to where reading fails; none when it cannot be opened. Never throws for a file:
// what lies below /proc fails in the middle when its process ends.
std::string wholeFile(const std::filesystem::path& file);

// Makes the file, or overwrites it. False when that fails.
[[nodiscard]] bool writeWhole(const std::filesystem::path& file, std::string_view text);

// The same in one step: whoever reads the file meanwhile sees all of the old text or all of the new. Without `mode` the
// file has the usual one.
[[nodiscard]] bool replaceFile(const std::filesystem::path& file, std::string_view text,
                               std::optional<unsigned> mode = std::nullopt);

// Adds a line in one write, so that those of several processes stay whole, to a file that every user may add to. False,
// with errno set, when that fails.
bool appendLine(const std::filesystem::path& file, std::string_view line);

}  // namespace halvo::sim
