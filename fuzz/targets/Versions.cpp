// Three versions, separated by bars: how they compare, and what may be installed over what.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/install/Versions.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

int order(const std::string& a, const std::string& b) { return static_cast<int>(halvoCompareVersions(a, b)); }

// The numbers without zeros at the end, which change nothing.
std::vector<std::int64_t> numbersOf(const std::string& version) {
  std::vector<std::int64_t> numbers;
  for (const std::string& piece : pieces(version, dotAt)) numbers.push_back(decimal(piece).value_or(0));
  while (!numbers.empty() && numbers.back() == 0) numbers.pop_back();
  return numbers;
}

int orderByTheRules(const std::string& a, const std::string& b) {
  const auto left = numbersOf(a);
  const auto right = numbersOf(b);
  for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
    const std::int64_t l = i < left.size() ? left[i] : 0;
    const std::int64_t r = i < right.size() ? right[i] : 0;
    if (l != r) return l < r ? -1 : 1;
  }
  return 0;
}

void checkPair(const std::string& a, const std::string& b) {
  const int rule = orderByTheRules(a, b);
  require(order(a, b) == rule, "versions compare number by number");
  require(order(b, a) == -rule, "comparing is antisymmetric");
  require(order("." + a + ".0", b) == rule, "dots and zeros change nothing");

  const DowngradeDecision decision = halvoDowngradeDecision(b, a);
  require((decision == DowngradeDecision::install) == b.empty(), "over nothing anything is installed");
  require((decision == DowngradeDecision::refuse) == (!b.empty() && rule < 0), "no way down");
  require(halvoDowngradeDecision(std::nullopt, a) == DowngradeDecision::install, "an absent driver refuses nobody");
}

void checkThree(const std::string& a, const std::string& b, const std::string& c) {
  const int ab = order(a, b);
  const int bc = order(b, c);
  const int ac = order(a, c);
  require(!(ab <= 0 && bc <= 0) || ac <= 0, "comparing is transitive");
  require(!(ab >= 0 && bc >= 0) || ac >= 0, "comparing is transitive downwards");
  require(ab != 0 || ac == bc, "equal versions compare alike");
  const bool isWayUp = halvoDowngradeDecision(a, b) == DowngradeDecision::overwrite &&
                       halvoDowngradeDecision(b, c) == DowngradeDecision::overwrite;
  require(!isWayUp || halvoDowngradeDecision(a, c) == DowngradeDecision::overwrite, "two steps up lead up");
}

}  // namespace

void check(std::string_view bytes) {
  Input input(bytes);
  const std::string a = input.text();
  const std::string b = input.text();
  const std::string c = input.rest();
  require(order(a, a) == 0, "a version equals itself");
  checkPair(a, b);
  checkPair(b, a);
  checkThree(a, b, c);
  checkThree(b, c, a);
}

}  // namespace halvo::fuzz
