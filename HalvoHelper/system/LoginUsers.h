// Finds the users who are logged in graphically: the ordinary accounts that have a live GUI domain in launchd.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/system/Launchctl.h"
#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

// The ids of at least 500 that end a line of the directory service's listing, ascending, each once. Lines that do not
// end in a number are passed over.
[[nodiscard]] std::vector<std::int64_t> halvoParseLoginUids(std::string_view dscl);

// Lists the accounts (dscl) and asks launchd for each ordinary one, ascending. Whatever fails only shrinks the
// result. Blocks for one child process and one more for each ordinary account.
[[nodiscard]] std::vector<std::int64_t> halvoEnumerateActiveGuiDomains(const Launchctl& launchctl,
                                                                       const ProcessRunner& runner);

// The reply text: {"uids":[501,502]}.
[[nodiscard]] std::string halvoGuiDomainsJSON(const std::vector<std::int64_t>& uids);

}  // namespace halvo
