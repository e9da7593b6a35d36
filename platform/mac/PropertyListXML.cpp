#include "platform/mac/PropertyListXML.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/mac/UnicodeText.h"

namespace halvo {
namespace {

std::string utf8FromBytes(std::string_view bytes, bool bigEndian) {
  std::vector<std::uint16_t> units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units.push_back(static_cast<std::uint16_t>(bigEndian ? first << 8U | second : second << 8U | first));
  }
  return utf8FromUTF16(units);
}

// Cuts everything up to and with `end` off the front, or all when there is no end.
std::string_view takeThrough(std::string_view& xml, std::string_view end) {
  const std::size_t at = xml.find(end);
  const std::string_view piece = xml.substr(0, at == std::string_view::npos ? at : at + end.size());
  xml.remove_prefix(piece.size());
  return piece;
}

// Cuts the next piece off the front: one tag, comment or other markup, or the text in front of the next one.
std::string_view takePiece(std::string_view& xml) {
  if (xml.starts_with("<!--")) return takeThrough(xml, "-->");
  if (xml.starts_with("<![CDATA[")) return takeThrough(xml, "]]>");
  if (xml.starts_with("<?")) return takeThrough(xml, "?>");
  if (xml.starts_with('<')) return takeThrough(xml, ">");
  const std::string_view text = xml.substr(0, xml.find('<'));
  xml.remove_prefix(text.size());
  return text;
}

std::string_view withoutLeading(std::string_view characters, std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
  return text;
}

bool isBlank(std::string_view text) { return withoutLeading(" \t\r\n", text).empty(); }

bool isTag(std::string_view piece) {
  return piece.starts_with('<') && !piece.starts_with("<!") && !piece.starts_with("<?");
}

// The reader goes through such declarations by rules of its own, and where it takes them to end cannot be told from
// here.
bool declaresItsOwnType(std::string_view piece) {
  return piece.starts_with("<!DOCTYPE") && piece.find('[') != std::string_view::npos;
}

bool mayFollowTheEnd(std::string_view piece) {
  return isBlank(piece) || piece.starts_with("<!--") || piece.starts_with("<?");
}

bool namesNul(std::string_view text) {
  for (std::size_t at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at + 1)) {
    const std::string_view digits = withoutLeading("x", text.substr(at + 2));
    if (digits.starts_with('0') && withoutLeading("0", digits).starts_with(';')) return true;
  }
  return false;
}

}  // namespace

std::string utf8OfPropertyList(std::string_view list) {
  const bool bigEndian = list.starts_with("\xFE\xFF");
  if (!bigEndian && !list.starts_with("\xFF\xFE")) return std::string(list);
  return utf8FromBytes(list.substr(2), bigEndian);
}

bool isLaxPropertyListXML(std::string_view utf8) {
  if (utf8.starts_with("\xEF\xBB\xBF")) utf8.remove_prefix(3);
  if (!withoutLeading(" \t\r\n", utf8).starts_with('<')) return false;
  std::size_t depth = 0;
  bool hasEnded = false;
  while (!utf8.empty()) {
    const std::string_view piece = takePiece(utf8);
    if (hasEnded && !mayFollowTheEnd(piece)) return true;
    if (!piece.starts_with('<') && namesNul(piece)) return true;
    if (declaresItsOwnType(piece)) return true;
    if (!isTag(piece)) continue;
    const bool isEnd = piece.starts_with("</");
    if (!isEnd && !piece.ends_with("/>")) ++depth;
    if (isEnd && depth > 0) --depth;
    if (depth == 0) hasEnded = true;
  }
  return false;
}

}  // namespace halvo
