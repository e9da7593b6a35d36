// What a Mac keeps from daemons: users' Downloads, Desktop and Documents. Root is no exception; only an administrator
// gives a program full disk access.
#pragma once

#include <filesystem>
#include <vector>

#include "sim/launchd/LaunchdPaths.h"

namespace halvo::sim {

// Such folders in the homes of this machine; none for a program that the file "full-disk-access" names.
[[nodiscard]] std::vector<std::filesystem::path> foldersKeptFrom(const std::filesystem::path& program,
                                                                 const LaunchdPaths& paths);

// For the calling process and those that it starts, nothing in these folders can be looked up, listed, read or changed
// from now on (EACCES): for good, and for nobody else. Answers the error when that cannot be done. Changes the working
// directory; only for a program with one thread.
[[nodiscard]] int closeFolders(const std::vector<std::filesystem::path>& folders);

}  // namespace halvo::sim
