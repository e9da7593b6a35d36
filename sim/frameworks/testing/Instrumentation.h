// The frameworks' side of FrameworkProbe: each function asks here first. Costs one relaxed load while no probe listens.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sim/frameworks/corefoundation/Object.h"

namespace halvo::sim {

// What a test wants a call to answer instead of doing its work.
struct ScriptedAnswer {
  std::int32_t status = 0;
  bool nullResult = false;
  bool actsFirst = false;      // does its work as well
  CFTypeRef object = nullptr;  // the result

  // Stores the result, if one is scripted, and answers the status.
  template <typename Result>
  std::int32_t store(Result* result) const {
    if (nullResult && result != nullptr) *result = Result{};
    if constexpr (requires { static_cast<Result>(object); }) {
      if (object == nullptr || result == nullptr) return status;
      objectOf(object).retain();
      *result = static_cast<Result>(object);
    }
    return status;
  }
};

// Does the work of a call, unless a test wants another answer.
template <typename Result, typename Work>
std::int32_t perform(const std::optional<ScriptedAnswer>& scripted, Result* result, Work work) {
  if (!scripted) return work();
  if (!scripted->actsFirst) return scripted->store(result);
  static_cast<void>(work());
  return scripted->status;
}

namespace probe {

inline std::atomic<bool> listening{false};

// Takes the next scripted answer for `function`.
std::optional<ScriptedAnswer> takeAnswer(std::string_view function);
void record(std::string call);
// How many of `count` devices this call of `function` may find.
std::size_t limitedDevices(std::string_view function, std::size_t count);

}  // namespace probe

inline bool probed() { return probe::listening.load(std::memory_order_acquire); }

// For a function that can be scripted but is not recorded.
inline std::optional<ScriptedAnswer> observe(std::string_view function) {
  return probed() ? probe::takeAnswer(function) : std::nullopt;
}

// Records the call; `describe` makes the text of the arguments and runs only while a probe listens.
template <typename Describe>
std::optional<ScriptedAnswer> observe(std::string_view function, Describe describe) {
  if (!probed()) return std::nullopt;
  const std::string arguments = describe();
  probe::record(std::string(function) + (arguments.empty() ? "" : " ") + arguments);
  return probe::takeAnswer(function);
}

// Two lower-case hexadecimal digits a byte.
std::string hexText(const void* bytes, std::size_t size);

// The text in quotation marks, escaped as in JSON.
std::string quotedText(std::string_view text);

}  // namespace halvo::sim
