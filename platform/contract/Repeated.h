// Long texts for tests of readers: the same piece many times over.
#pragma once

#include <string>
#include <string_view>

namespace halvo {

inline std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

}  // namespace halvo
