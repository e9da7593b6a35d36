#include "sim/platform/PropertyListNesting.h"

#include <cstdint>
#include <optional>

namespace halvo::sim {
namespace {

constexpr std::size_t kMostContainers = 10'000;
constexpr std::string_view kBinaryMagic = "bplist";

std::size_t countOf(std::string_view tag, std::string_view text) {
  std::size_t count = 0;
  for (auto at = text.find(tag); at != std::string_view::npos; at = text.find(tag, at + tag.size())) ++count;
  return count;
}

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char c : bytes) value = (value << 8U) | static_cast<unsigned char>(c);
  return value;
}

// The end of a binary property list says where each object lies.
struct ObjectTable {
  std::size_t offsetSize;
  std::uint64_t objects;
  std::uint64_t start;
};

std::optional<ObjectTable> objectTableOf(std::string_view list) {
  constexpr std::size_t kTrailer = 32;
  if (list.size() < kBinaryMagic.size() + kTrailer) return std::nullopt;
  const std::string_view trailer = list.substr(list.size() - kTrailer);
  const ObjectTable table{.offsetSize = static_cast<std::size_t>(bigEndian(trailer.substr(6, 1))),
                          .objects = bigEndian(trailer.substr(8, 8)),
                          .start = bigEndian(trailer.substr(24, 8))};
  if (table.offsetSize == 0 || table.offsetSize > sizeof(std::uint64_t)) return std::nullopt;
  if (table.start > list.size() || table.objects > (list.size() - table.start) / table.offsetSize) return std::nullopt;
  return table;
}

bool isContainer(char marker) {
  const unsigned kind = static_cast<unsigned char>(marker) >> 4U;
  return kind == 0xA || kind == 0xB || kind == 0xC || kind == 0xD;
}

std::size_t containersInBinary(std::string_view list) {
  const auto table = objectTableOf(list);
  // A table that does not fit into the file is refused by the library too.
  if (!table) return 0;
  std::size_t count = 0;
  for (std::uint64_t i = 0; i < table->objects; ++i) {
    const std::uint64_t offset = bigEndian(list.substr(table->start + i * table->offsetSize, table->offsetSize));
    if (offset < list.size() && isContainer(list[offset])) ++count;
  }
  return count;
}

}  // namespace

bool holdsTooManyContainers(std::string_view propertyList) {
  if (propertyList.starts_with(kBinaryMagic)) return containersInBinary(propertyList) > kMostContainers;
  return countOf("<dict", propertyList) + countOf("<array", propertyList) > kMostContainers;
}

}  // namespace halvo::sim
