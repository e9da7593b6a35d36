// Extracts what matters from the report that the system's package tool prints about a signature. Decides nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

struct HalvoPkgCert {
  std::int64_t position = 0;  // the report's own number less one: the leaf has 0
  std::string commonName;
  std::string sha256;  // hexadecimal digits, upper case, no separators; empty if the report gave none

  bool operator==(const HalvoPkgCert&) const = default;
};

struct HalvoPkgSignature {
  std::string status;               // empty if the report has no such line
  std::string notarization;         // likewise
  std::vector<HalvoPkgCert> chain;  // in the order of the report

  bool operator==(const HalvoPkgSignature&) const = default;
};

// How much of a chain is kept: its first certificates, and of each fingerprint its first digits.
struct HalvoPkgChainLimits {
  std::size_t certificates = std::numeric_limits<std::size_t>::max();
  std::size_t digits = std::numeric_limits<std::size_t>::max();
};

// Total: a text that is no such report gives an empty record. Time linear in the length of `report`. What is beyond the
// limits takes no memory.
[[nodiscard]] HalvoPkgSignature halvoParsePkgSignature(std::string_view report, const HalvoPkgChainLimits& limits = {});

}  // namespace halvo
