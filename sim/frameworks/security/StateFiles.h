// Small text files in the state folder, read and written by several processes at once.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace halvo::sim {

// The JSON object in the file; nothing when it is missing, cannot be read or holds anything else.
std::optional<nlohmann::json> readJSONObject(const std::filesystem::path& file);

// Replaces the file at once, so that no reader sees half of it. Makes the folder above it with `folderMode` if needed.
bool replaceJSON(const std::filesystem::path& file, const nlohmann::json& json, mode_t folderMode);

// The status that a test wrote for `call` into "faults/authorization" of the state folder, a line each such as
// "create -60008". The calls are create, create-from-external-form, make-external-form, copy-rights, right-get and
// right-set.
std::optional<std::int32_t> scriptedFault(std::string_view call);

}  // namespace halvo::sim
