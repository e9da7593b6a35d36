// What every target is: one function over one input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace halvo::fuzz {

// Gives the input to the code under test and demands the target's properties of what comes back. Each target brings its
// own. Deterministic, keeps nothing from one input to the next.
void check(std::string_view input);

}  // namespace halvo::fuzz

// The name that libFuzzer looks for.
extern "C" inline __attribute__((used)) int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  halvo::fuzz::check({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
