#include "sim/tools/BrokerVersion.h"

#include <charconv>

namespace halvo::sim {
namespace {

// The version stands before its length and this word, so that it is found from the end whatever it contains.
constexpr std::string_view kMagic = "halvo-broker-version";
constexpr std::size_t kLengthDigits = 8;

std::string paddedLength(std::size_t length) {
  const std::string digits = std::to_string(length);
  return std::string(kLengthDigits - digits.size(), '0') + digits;
}

}  // namespace

std::string withBrokerVersion(std::string_view program, std::string_view version) {
  std::string result(program);
  result += version;
  result += paddedLength(version.size());
  result += kMagic;
  return result;
}

std::optional<std::string> brokerVersion(std::string_view program) {
  if (program.size() < kLengthDigits + kMagic.size() || !program.ends_with(kMagic)) return std::nullopt;
  program.remove_suffix(kMagic.size());
  const std::string_view digits = program.substr(program.size() - kLengthDigits);
  program.remove_suffix(kLengthDigits);
  std::size_t length = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (parsed.ptr != digits.data() + digits.size() || length > program.size()) return std::nullopt;
  return std::string(program.substr(program.size() - length));
}

}  // namespace halvo::sim
