// Takes what was typed apart, as programs of the system do: options stand anywhere, "--" ends them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

enum class Option {
  help,
  version,
  manifest,
  timeout,
  acceptAudioInterruption,
  withoutGrant,
  withoutChecks,
  openSettings,
  json
};

struct GivenOption {
  Option option;
  std::string value;  // empty for an option that takes none
  bool operator==(const GivenOption&) const = default;
};

struct TypedWords {
  std::vector<std::string> operands;
  std::vector<GivenOption> options;    // in their order
  std::optional<std::string> problem;  // what is wrong with the first option that is none

  [[nodiscard]] bool has(Option option) const;
};

// Uses getopt_long, whose state is the process's: one call at a time.
[[nodiscard]] TypedWords takeApart(const std::vector<std::string>& arguments);

// "--manifest" and the like.
[[nodiscard]] std::string_view nameOf(Option option);

[[nodiscard]] std::span<const std::string_view> optionNames();

}  // namespace halvo
