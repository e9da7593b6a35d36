// The quick roads through texts, compared with plain ones that look at one byte or one code point at a time.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

// One row of the Unicode standard's table of well-formed byte sequences.
struct ByteRange {
  unsigned char first;
  unsigned char last;
};
using Sequence = std::vector<ByteRange>;

const std::array<Sequence, 9> kWellFormed = {{
    {{0x00, 0x7F}},
    {{0xC2, 0xDF}, {0x80, 0xBF}},
    {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}},
    {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}},
    {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}},
}};

bool lies(char c, const ByteRange& range) {
  const auto byte = static_cast<unsigned char>(c);
  return range.first <= byte && byte <= range.last;
}

bool beginsWith(std::string_view text, const Sequence& sequence) {
  return text.size() >= sequence.size() && std::equal(sequence.begin(), sequence.end(), text.begin(),
                                                      [](const ByteRange& range, char c) { return lies(c, range); });
}

std::size_t plainLeadingUTF8(std::string_view text) {
  const auto fits = [&](std::size_t at) {
    return std::ranges::find_if(kWellFormed, [&](const auto& row) { return beginsWith(text.substr(at), row); });
  };
  std::size_t at = 0;
  for (auto row = fits(at); row != kWellFormed.end(); row = fits(at)) at += row->size();
  return at;
}

bool plainAppendHexDigits(std::string& digits, std::string_view text) {
  std::string found;
  while (!text.empty()) {
    const CodePoint next = halvoDecodedCodePoint(text);
    const std::size_t digit = std::u32string_view(U"0123456789abcdefABCDEF").find(next.value);
    if (digit != std::u32string_view::npos) {
      found += "0123456789ABCDEFABCDEF"[digit];
    } else if (!halvoIsWhitespace(next.value)) {
      return false;
    }
    text = next.rest;
  }
  digits += found;
  return true;
}

rc::Gen<std::string> byteOf(rc::Gen<char> bytes) {
  return rc::gen::map(std::move(bytes), [](char c) { return std::string(1, c); });
}

rc::Gen<std::string> textsOf(const rc::Gen<std::string>& piece) {
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece), [](const auto& pieces) {
    std::string text;
    for (const std::string& next : pieces) text += next;
    return text;
  });
}

// Runs of ASCII of all lengths around eight bytes, code points of every length, and now and then a byte of any kind.
rc::Gen<std::string> texts() {
  const auto run =
      rc::gen::map(rc::gen::inRange<std::size_t>(0, 20), [](std::size_t n) { return std::string(n, 'a'); });
  const auto whole = rc::gen::element<std::string>("\xC3\xA9", "\xE2\x82\xAC", "\xED\x9F\xBF", "\xF0\x9F\x94\x8A");
  const auto piece =
      rc::gen::weightedOneOf<std::string>({{4, run}, {4, whole}, {1, byteOf(rc::gen::arbitrary<char>())}});
  return textsOf(piece);
}

// Digits, whitespace of every length, and rarely something else.
rc::Gen<std::string> digitTexts() {
  const auto digit = byteOf(rc::gen::element('0', '5', '9', 'a', 'f', 'A', 'C', 'F', ' ', '\t', '\r'));
  const auto space = rc::gen::element<std::string>("\xC2\xA0", "\xE2\x80\xA8", "\xE3\x80\x80");
  const auto piece =
      rc::gen::weightedOneOf<std::string>({{40, digit}, {4, space}, {1, byteOf(rc::gen::arbitrary<char>())}});
  return textsOf(piece);
}

std::size_t countedInTwoPieces(std::string_view text, std::size_t cut) {
  const std::size_t checked = halvoLeadingUTF8(text.substr(0, cut));
  return checked + halvoLeadingUTF8(text.substr(checked));
}

std::vector<std::size_t> countedWithEveryCut(std::string_view text) {
  std::vector<std::size_t> counts;
  for (std::size_t cut = 0; cut <= text.size(); ++cut) counts.push_back(countedInTwoPieces(text, cut));
  return counts;
}

std::size_t countedByteAfterByte(std::string_view text) {
  std::size_t checked = 0;
  for (std::size_t size = 1; size <= text.size(); ++size) {
    checked += halvoLeadingUTF8(text.substr(checked, size - checked));
  }
  return checked;
}

RC_GTEST_PROP(LeadingUtf8Property, IsWhatTheTableOfSequencesSays, ()) {
  const std::string text = *texts();

  const std::size_t count = halvoLeadingUTF8(text);

  RC_CLASSIFY(count == text.size(), "well-formed");
  RC_ASSERT(count == plainLeadingUTF8(text));
}

RC_GTEST_PROP(LeadingUtf8Property, IsTheSameWhereverATextIsCut, ()) {
  const std::string text = *texts();
  const std::vector<std::size_t> expected(text.size() + 1, plainLeadingUTF8(text));

  RC_ASSERT(countedWithEveryCut(text) == expected);
  RC_ASSERT(countedByteAfterByte(text) == expected.front());
}

RC_GTEST_PROP(HexDigitsProperty, AreThoseThatThePlainRoadFinds, ()) {
  const std::string text = *digitTexts();
  std::string quick = "7F";
  std::string plain = "7F";

  const bool appended = halvoAppendHexDigits(quick, text);

  RC_CLASSIFY(appended, "appended");
  RC_ASSERT(appended == plainAppendHexDigits(plain, text));
  RC_ASSERT(quick == plain);
}

RC_GTEST_PROP(AllWhitespaceProperty, HoldsWhenATextSplitAtWhitespaceLeavesNothing, ()) {
  const std::string text = *rc::gen::container<std::string>(
      rc::gen::weightedElement<char>({{8, ' '}, {4, '\n'}, {2, '\xC2'}, {2, '\xA0'}, {1, 'x'}, {1, '\0'}}));

  const bool blank = halvoIsAllWhitespace(text);

  RC_CLASSIFY(blank, "blank");
  RC_ASSERT(blank == halvoSplit(text, halvoIsWhitespace).empty());
}

}  // namespace
}  // namespace halvo
