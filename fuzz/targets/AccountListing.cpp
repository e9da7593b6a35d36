// The directory service's listing of accounts, and who of them is asked about.
#include <algorithm>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/system/LoginUsers.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

using Uids = std::vector<std::int64_t>;

Uids uidsByTheRules(std::string_view listing) {
  std::set<std::int64_t> uids;
  for (const std::string& line : pieces(listing, lineEndAt)) {
    const auto words = pieces(line, whiteSpaceAt);
    const auto last = words.empty() ? std::nullopt : decimal(words.back());
    if (last && *last >= 500) uids.insert(*last);
  }
  return {uids.begin(), uids.end()};
}

std::string listingOf(const Uids& uids) {
  std::string listing;
  for (const std::int64_t uid : uids) listing += "somebody  " + std::to_string(uid) + "\n";
  return listing;
}

std::string replyOf(const Uids& uids) {
  std::string reply = R"({"uids":[)";
  for (const std::int64_t uid : uids) reply += std::to_string(uid) + ",";
  if (!uids.empty()) reply.pop_back();
  return reply + "]}";
}

bool isLoggedIn(std::int64_t uid) { return uid % 3 != 0; }

// A machine on which the directory service lists these accounts and two of three users are logged in.
class AccountsRunner final : public ProcessRunner {
 public:
  explicit AccountsRunner(std::string listing) : listing_(std::move(listing)) {}

  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override {
    runs.push_back(tool);
    for (const std::string& argument : arguments) runs.back() += " " + argument;
    if (runs.size() == 1) return {.code = 1, .output = listing_};
    const std::string uid = arguments.back().substr(arguments.back().find('/') + 1);
    return {.code = isLoggedIn(decimal(uid).value_or(0)) ? 0 : 113, .output = ""};
  }

  mutable std::vector<std::string> runs;

 private:
  std::string listing_;
};

void checkEnumeration(std::string_view listing, const Uids& uids) {
  const auto runner = std::make_shared<AccountsRunner>(std::string(listing));
  Uids expected;
  std::vector<std::string> runs = {"/usr/bin/dscl . -list /Users UniqueID"};
  for (const std::int64_t uid : uids) {
    runs.push_back("/bin/launchctl print gui/" + std::to_string(uid));
    if (isLoggedIn(uid)) expected.push_back(uid);
  }

  require(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner) == expected, "those who are logged in are found");
  require(runner->runs == runs, "one listing and one question for each ordinary account");
}

}  // namespace

void check(std::string_view listing) {
  const Uids uids = halvoParseLoginUids(listing);

  require(uids == uidsByTheRules(listing), "the listing is read as the rules say");
  require(uids.size() <= listing.size() / 4 + 1, "each id has three digits and a line end at least");
  require(std::ranges::adjacent_find(uids, std::greater_equal<>()) == uids.end(), "the ids ascend, each once");
  require(halvoParseLoginUids(listingOf(uids)) == uids, "what was read is read again");
  require(halvoParseLoginUids(std::string(listing) + "\n" + std::string(listing)) == uids, "twice is once");
  require(halvoGuiDomainsJSON(uids) == replyOf(uids), "the reply names the ids in their order");
  checkEnumeration(listing, uids);
}

}  // namespace halvo::fuzz
