#include "HalvoHelper/system/LoginUsers.h"

#include <algorithm>
#include <iterator>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

// Ids below belong to the system's own accounts.
constexpr std::int64_t kFirstOrdinaryUid = 500;

// A carriage return before a line feed needs no rule of its own: empty lines do not count.
bool isLineEnd(char32_t c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; }

}  // namespace

std::vector<std::int64_t> halvoParseLoginUids(std::string_view dscl) {
  std::vector<std::int64_t> uids;
  for (const std::string_view line : halvoSplit(dscl, isLineEnd)) {
    const auto words = halvoSplit(line, halvoIsWhitespace);
    if (words.empty()) continue;
    const auto uid = halvoParseDecimal(words.back());
    if (uid && *uid >= kFirstOrdinaryUid) uids.push_back(*uid);
  }
  std::ranges::sort(uids);
  const auto repeated = std::ranges::unique(uids);
  uids.erase(repeated.begin(), repeated.end());
  return uids;
}

std::vector<std::int64_t> halvoEnumerateActiveGuiDomains(const Launchctl& launchctl, const ProcessRunner& runner) {
  const ProcessResult listing = runner.run("/usr/bin/dscl", {".", "-list", "/Users", "UniqueID"});
  std::vector<std::int64_t> present;
  std::ranges::copy_if(halvoParseLoginUids(listing.output), std::back_inserter(present),
                       [&](std::int64_t uid) { return launchctl.guiDomainPresent(uid); });
  return present;
}

std::string halvoGuiDomainsJSON(const std::vector<std::int64_t>& uids) {
  std::string list;
  for (const std::int64_t uid : uids) list += (list.empty() ? "" : ",") + std::to_string(uid);
  return "{\"uids\":[" + list + "]}";
}

}  // namespace halvo
