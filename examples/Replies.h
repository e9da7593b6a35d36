// How a client reads the helper's replies, and what it tells a person about them. Works for every client in C++.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace example {

// The text under `key`. The helper does not escape what it puts into a reply, so a version out of a manifest may bring
// keys of its own: one that comes twice has no value.
inline std::optional<std::string> member(const std::string& reply, const std::string& key) {
  const std::string begin = "\"" + key + "\":\"";
  const std::size_t found = reply.find(begin);
  if (found == std::string::npos || reply.rfind(begin) != found) return std::nullopt;
  const std::size_t value = found + begin.size();
  return reply.substr(value, reply.find('"', value) - value);
}

// The helper writes it first and itself; any later one came with a value.
inline std::string codeOf(const std::string& reply) {
  constexpr std::string_view kBegin = "{\"code\":\"";
  if (!reply.starts_with(kBegin)) return {};
  return reply.substr(kBegin.size(), reply.find('"', kBegin.size()) - kBegin.size());
}

struct Meaning {
  std::string_view code;
  std::string_view sentence;
};

inline constexpr std::array<Meaning, 8> kMeanings = {{
    {"ok", "Done."},
    {"unauthorized", "The approval was not accepted, perhaps because it is more than five minutes old. Try again."},
    {"audio_active", "Audio is running. Nothing was changed."},
    {"downgrade", "A newer version is installed already. Nothing was changed."},
    {"untrusted_package", "The package was refused, and nothing was changed. "},
    {"rolled_back", "The installer failed; the previous version was put back. Keep the log for support."},
    {"install_failed", "The install failed. Keep the log for support."},
    {"incomplete", "Something could not be removed; the log names it. Try again."},
}};

// What a person is told.
inline std::string meaningOf(const std::string& reply) {
  const std::string code = codeOf(reply);
  const auto found = std::ranges::find(kMeanings, code, &Meaning::code);
  if (found == kMeanings.end()) return "The helper answered something unknown. Update Halvo.";
  if (code != "untrusted_package") return std::string(found->sentence);
  const std::string reason = member(reply, "reason").value_or("unknown");
  return std::string(found->sentence) +
         (reason == "staging_failed" ? "Put it into another folder, see that the disk is not full, and try again."
                                     : "Download it again from the maker. (" + reason + ")");
}

}  // namespace example
