#include "sim/platform/PropertyLists.h"

#include <utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace halvo::sim {
namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kTrailer = 32;

std::uint64_t numberIn(std::string_view bigEndian) {
  std::uint64_t number = 0;
  for (const char byte : bigEndian) number = (number << 8U) | static_cast<unsigned char>(byte);
  return number;
}

// The upper half of an object's first byte.
enum class Kind : unsigned char {
  constant = 0x0,
  integer = 0x1,
  real = 0x2,
  date = 0x3,
  data = 0x4,
  ascii = 0x5,
  utf16 = 0x6,
  uid = 0x8,
  array = 0xA,
  orderedSet = 0xB,
  set = 0xC,
  dictionary = 0xD,
};

Kind kindOf(char marker) { return static_cast<Kind>(static_cast<unsigned char>(marker) >> 4U); }
bool isContainer(Kind kind) { return kind >= Kind::array && kind <= Kind::dictionary; }
bool isASCII(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool isText(Kind kind) { return kind == Kind::ascii || kind == Kind::utf16; }

// The end of a list says where the table of its objects' positions begins and how wide the numbers are.
struct Layout {
  std::size_t positionWidth;
  std::size_t referenceWidth;
  std::uint64_t objects;
  std::uint64_t top;
  std::uint64_t table;
};

std::optional<Layout> layoutOf(std::string_view list) {
  if (list.size() <= kHeader + kTrailer || !list.starts_with("bplist0")) return std::nullopt;
  const std::size_t end = list.size() - kTrailer;
  const std::string_view trailer = list.substr(end);
  const Layout layout{.positionWidth = static_cast<std::size_t>(numberIn(trailer.substr(6, 1))),
                      .referenceWidth = static_cast<std::size_t>(numberIn(trailer.substr(7, 1))),
                      .objects = numberIn(trailer.substr(8, 8)),
                      .top = numberIn(trailer.substr(16, 8)),
                      .table = numberIn(trailer.substr(24, 8))};
  const auto isWidth = [](std::size_t width) { return width >= 1 && width <= sizeof(std::uint64_t); };
  if (!isWidth(layout.positionWidth) || !isWidth(layout.referenceWidth)) return std::nullopt;
  if (layout.table <= kHeader || layout.table >= end || layout.top >= layout.objects) return std::nullopt;
  // The table fills all of the room in front of the trailer.
  const std::uint64_t room = end - layout.table;
  if (room % layout.positionWidth != 0 || room / layout.positionWidth != layout.objects) return std::nullopt;
  return layout;
}

struct Object {
  Kind kind;
  std::size_t count;  // of bytes, characters or members
  std::string_view payload;
};

std::string textOf(const Object& object) {
  if (object.kind == Kind::ascii) return std::string(object.payload);
  const auto unitAt = [&](std::size_t i) { return static_cast<char32_t>(numberIn(object.payload.substr(2 * i, 2))); };
  std::string text;
  for (std::size_t i = 0; i < object.count; ++i) {
    char32_t value = unitAt(i);
    const char32_t next = i + 1 < object.count ? unitAt(i + 1) : 0;
    if ((value & 0xFC00U) == 0xD800U && (next & 0xFC00U) == 0xDC00U) {
      value = 0x10000U + ((value - 0xD800U) << 10U) + (next - 0xDC00U);
      ++i;
    } else if ((value & 0xF800U) == 0xD800U) {
      value = U'\uFFFD';
    }
    utf8::append(value, std::back_inserter(text));
  }
  return text;
}

PropertyListValue valueOf(const Object& object) {
  return isText(object.kind) ? PropertyListValue(textOf(object)) : PropertyListOther{};
}

// The objects of a list and what they hold. Each is looked at once, however often it is named.
class Objects {
 public:
  Objects(std::string_view list, const Layout& layout)
      : list_(list), layout_(layout), area_(list.substr(0, layout.table)), progress_(layout.table, Progress::none) {}

  // Whether everything that can be reached from the top is sound.
  bool areSound() { return positionsAreSound() && isSound(position(layout_.top)); }

  // After areSound().
  [[nodiscard]] std::optional<PropertyList> entries() const {
    const Object top = *objectAt(position(layout_.top));
    if (top.kind != Kind::dictionary) return std::nullopt;
    PropertyList entries;
    std::size_t texts = 0;
    for (std::size_t i = 0; i < top.count; ++i) {
      const Object key = *objectAt(*memberAt(top, i));
      if (!isText(key.kind)) return std::nullopt;
      const Object value = *objectAt(*memberAt(top, top.count + i));
      texts += key.payload.size() + (isText(value.kind) ? value.payload.size() : 0);
      if (texts > 2 * list_.size() + kMostRepeatedPropertyListText) return std::nullopt;
      // Of a repeated key the first value counts: so it is on a Mac, in this form only.
      entries.try_emplace(textOf(key), valueOf(value));
    }
    return entries;
  }

 private:
  enum class Progress : unsigned char { none, begun, sound };

  [[nodiscard]] std::size_t position(std::uint64_t object) const {
    return numberIn(list_.substr(layout_.table + object * layout_.positionWidth, layout_.positionWidth));
  }

  [[nodiscard]] bool positionsAreSound() const {
    std::size_t containers = 0;
    for (std::uint64_t i = 0; i < layout_.objects; ++i) {
      const std::size_t at = position(i);
      if (at < kHeader || at >= area_.size()) return false;
      if (isContainer(kindOf(area_[at]))) ++containers;
    }
    return containers <= kMostPropertyListContainers;
  }

  // Counts from 15 on stand behind the marker, as an integer with a marker of its own.
  static std::optional<std::size_t> takeCount(std::string_view& object, unsigned low) {
    if (low < 0xF) return low;
    if (object.empty() || kindOf(object.front()) != Kind::integer) return std::nullopt;
    const std::size_t width = std::size_t{1} << (static_cast<unsigned char>(object.front()) & 0xFU);
    object.remove_prefix(1);
    if (width > sizeof(std::uint64_t) || width > object.size()) return std::nullopt;
    const std::uint64_t count = numberIn(object.substr(0, width));
    object.remove_prefix(width);
    return count;
  }

  // How many bytes the object takes behind its marker and count; nothing for a kind that is none.
  [[nodiscard]] std::optional<std::size_t> payloadSize(Kind kind, unsigned low, std::size_t count) const {
    switch (kind) {
      case Kind::constant:
        return low == 0x0 || low == 0x8 || low == 0x9 ? std::optional(0) : std::nullopt;
      case Kind::integer:
        return low <= 4 ? std::optional(std::size_t{1} << low) : std::nullopt;
      case Kind::real:
        return low == 2 || low == 3 ? std::optional(std::size_t{1} << low) : std::nullopt;
      case Kind::date:
        return low == 3 ? std::optional(sizeof(double)) : std::nullopt;
      case Kind::uid:
        return low + 1;
      case Kind::data:
      case Kind::ascii:
        return count;
      case Kind::utf16:
        return count * 2;
      case Kind::array:
      case Kind::set:
        return count * layout_.referenceWidth;
      case Kind::dictionary:
        return count * 2 * layout_.referenceWidth;
      case Kind::orderedSet:
        break;
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<Object> objectAt(std::size_t at) const {
    std::string_view rest = area_.substr(at + 1);
    const Kind kind = kindOf(area_[at]);
    const unsigned low = static_cast<unsigned char>(area_[at]) & 0xFU;
    const bool isCounted = isContainer(kind) || isText(kind) || kind == Kind::data;
    const auto count = isCounted ? takeCount(rest, low) : std::optional<std::size_t>(0);
    // Nothing counts more than there are bytes, so that the product below does not overflow.
    if (!count || *count > rest.size()) return std::nullopt;
    const auto size = payloadSize(kind, low, *count);
    if (!size || *size > rest.size()) return std::nullopt;
    return Object{.kind = kind, .count = *count, .payload = rest.substr(0, *size)};
  }

  [[nodiscard]] std::optional<std::size_t> memberAt(const Object& container, std::size_t index) const {
    const std::size_t width = layout_.referenceWidth;
    const std::uint64_t object = numberIn(container.payload.substr(index * width, width));
    return object < layout_.objects ? std::optional(position(object)) : std::nullopt;
  }

  // Goes down at most as deep as there are containers: one that holds itself is met again before it is sound.
  bool isSound(std::size_t at) {
    if (progress_[at] != Progress::none) return progress_[at] == Progress::sound;
    progress_[at] = Progress::begun;
    const auto object = objectAt(at);
    if (!object || !takesItsOwnBytes(*object)) return false;
    if (isContainer(object->kind) && !membersAreSound(*object)) return false;
    if (object->kind == Kind::ascii && !std::ranges::all_of(object->payload, isASCII)) return false;
    progress_[at] = Progress::sound;
    return true;
  }

  bool membersAreSound(const Object& container) {
    const std::size_t keys = container.kind == Kind::dictionary ? container.count : 0;
    for (std::size_t i = 0; i < container.count + keys; ++i) {
      const auto member = memberAt(container, i);
      if (!member || !isSound(*member)) return false;
      if (i < keys && isContainer(kindOf(area_[*member]))) return false;
    }
    return true;
  }

  // Objects that share bytes could make much work of few: together they may take no more than the list has.
  bool takesItsOwnBytes(const Object& object) {
    const std::size_t all = 1 + object.payload.size();
    if (all > area_.size() - taken_) return false;
    taken_ += all;
    return true;
  }

  std::string_view list_;
  Layout layout_;
  std::string_view area_;  // what lies in front of the table
  std::vector<Progress> progress_;
  std::size_t taken_ = 0;
};

}  // namespace

std::optional<PropertyList> readBinaryPropertyList(std::string_view list) {
  const auto layout = layoutOf(list);
  if (!layout) return std::nullopt;
  Objects objects(list, *layout);
  return objects.areSound() ? objects.entries() : std::nullopt;
}

}  // namespace halvo::sim
