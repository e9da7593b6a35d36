#include "fuzz/support/Require.h"

#include <cstdio>
#include <cstdlib>

namespace halvo::fuzz {

void require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", property);
  std::abort();
}

}  // namespace halvo::fuzz
