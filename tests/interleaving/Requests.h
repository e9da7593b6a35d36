// The requests that clients make, as the explorer runs them: through the handler and the wiring, or as sequences that
// nobody keeps apart.
#pragma once

#include <array>
#include <cstddef>
#include <set>
#include <string_view>
#include <vector>

#include "tests/interleaving/Explorer.h"
#include "tests/interleaving/Machine.h"

namespace halvo::interleaving {

enum class Request {
  install,
  failingInstall,
  evilInstall,
  unstageableInstall,
  unauthorizedInstall,
  uninstall,
  bundleRemoval,
  finalRemoval,
};

inline constexpr std::array kEveryRequest = {Request::install,
                                             Request::failingInstall,
                                             Request::evilInstall,
                                             Request::unstageableInstall,
                                             Request::unauthorizedInstall,
                                             Request::uninstall,
                                             Request::bundleRemoval,
                                             Request::finalRemoval};

[[nodiscard]] std::string_view name(Request request);

// What holds whatever is asked for.
inline const std::set<Rule> kEveryRule = {Rule::verifiedBytes, Rule::staging, Rule::snapshot, Rule::wholeRuns,
                                          Rule::authorized};

// What each request runs, without anything that keeps two of them apart. There is no authorization at this level.
[[nodiscard]] Explorer::SceneMaker sequences(const std::vector<Request>& requests,
                                             const std::set<Rule>& rules = kEveryRule);

// The requests as admitted clients make them, each over a handler of its own on one wiring.
[[nodiscard]] Explorer::SceneMaker wired(const std::vector<Request>& requests,
                                         const std::set<Rule>& rules = kEveryRule);

// All ways to choose so many of the requests, in no order, the same one more than once too.
[[nodiscard]] std::vector<std::vector<Request>> combinations(std::size_t size);

}  // namespace halvo::interleaving
