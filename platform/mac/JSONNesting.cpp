#include "platform/mac/JSONNesting.h"

#include <cstddef>

namespace halvo {

bool jsonNestsTooDeep(std::string_view json) {
  constexpr int kDeepest = 512;
  int depth = 0;
  bool inString = false;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const char c = json[i];
    if (inString) {
      if (c == '\\') ++i;
      inString = c != '"';
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > kDeepest) return true;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return false;
}

}  // namespace halvo
