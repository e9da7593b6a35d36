// Texts of unknown length and content, made fit for a report.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace halvo {

// At most `most` bytes of it, cut between two characters, with "..." behind what was cut.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t most);

// "90 s", "12 min", "30 h", "5 days"; a negative age is "in the future".
[[nodiscard]] std::string ageText(std::chrono::seconds age);

// "512 B", "211 KB", "3 MB": thousands, rounded down.
[[nodiscard]] std::string sizeText(std::int64_t bytes);

// "root:wheel"; a number for everybody whose name is not the same on every Mac.
[[nodiscard]] std::string ownerText(std::uint32_t user, std::uint32_t group);

// "755", "4755"
[[nodiscard]] std::string modeText(unsigned mode);

// The lines of a paragraph, broken at blanks so that none has more than 80 characters unless a single word does. The
// first one stands behind `mark`, the others behind `indent`.
[[nodiscard]] std::string wrapped(std::string_view text, std::string_view mark, std::string_view indent);

}  // namespace halvo
