// The helper's decisions, asked and answered in words. The tables in cases/ say what the words of each one mean.
#pragma once

#include "tests/oracle/Words.h"

namespace halvo {

[[nodiscard]] Words decideTrust(const Words& question);
[[nodiscard]] Words decideReport(const Words& question);
[[nodiscard]] Words decideRight(const Words& question);
[[nodiscard]] Words decideOrder(const Words& question);
[[nodiscard]] Words decideDowngrade(const Words& question);
[[nodiscard]] Words decideAccounts(const Words& question);
[[nodiscard]] Words decideBundlePath(const Words& question);

}  // namespace halvo
