// Runs a script that a package brings.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// Unpacks the Scripts archive into a folder of its own in the machine's /private/tmp, runs its `name` there with the
// arguments, and removes the folder. Blocks until the script has ended; what it prints goes to
// /private/var/log/install.log. Answers its exit status (the signal's number when a signal ended it), 0 when the
// archive has no such script, and -1 when it could not be run.
int runInstallScript(std::string_view scriptsArchive, const std::string& name,
                     const std::vector<std::string>& arguments, const std::filesystem::path& root);

}  // namespace halvo::sim
