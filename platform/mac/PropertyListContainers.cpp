#include "platform/mac/PropertyListContainers.h"

#include <cstddef>
#include <cstdint>

#include "platform/PropertyList.h"

namespace halvo {
namespace {

constexpr std::size_t kTrailerSize = 32;

std::size_t occurrences(std::string_view text, std::string_view wanted) {
  std::size_t count = 0;
  std::size_t at = text.find(wanted);
  while (at != std::string_view::npos) {
    ++count;
    at = text.find(wanted, at + 1);
  }
  return count;
}

std::uint64_t numberIn(std::string_view bigEndian) {
  std::uint64_t number = 0;
  for (const char byte : bigEndian) number = (number << 8U) + static_cast<unsigned char>(byte);
  return number;
}

bool isContainer(char marker) {
  // Array 0xA_, sets 0xB_ and 0xC_, dictionary 0xD_.
  const unsigned kind = static_cast<unsigned char>(marker) & 0xF0U;
  return kind >= 0xA0U && kind <= 0xD0U;
}

// The file ends with a trailer (byte 6: width of an offset, bytes 8 to 15: number of objects, bytes 24 to 31: position
// of the offsets), and before it stands the offset of every object. What contradicts itself is left to the reader.
std::size_t containersOfBinary(std::string_view list) {
  if (list.size() < kTrailerSize) return 0;
  const std::string_view trailer = list.substr(list.size() - kTrailerSize);
  const auto width = static_cast<unsigned char>(trailer[6]);
  const std::uint64_t objects = numberIn(trailer.substr(8, 8));
  const std::uint64_t table = numberIn(trailer.substr(24, 8));
  if (width == 0 || width > 8 || table > list.size() || objects > (list.size() - table) / width) return 0;
  std::size_t count = 0;
  for (std::uint64_t i = 0; i < objects; ++i) {
    const std::uint64_t position = numberIn(list.substr(table + i * width, width));
    if (position < list.size() && isContainer(list[position])) ++count;
  }
  return count;
}

}  // namespace

bool holdsTooManyContainers(std::string_view propertyList) {
  if (propertyList.starts_with("bplist")) return containersOfBinary(propertyList) > kMostPropertyListContainers;
  if (propertyList.find('\0') != std::string_view::npos) return true;
  return occurrences(propertyList, "<array") + occurrences(propertyList, "<dict") > kMostPropertyListContainers;
}

}  // namespace halvo
