#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/PropertyList.h"
#include "sim/platform/PropertyListNesting.h"

namespace halvo {
namespace {

struct NodeFreer {
  void operator()(void* node) const { plist_free(node); }
};
struct MemoryFreer {
  void operator()(void* memory) const { std::free(memory); }
};
using OwnedNode = std::unique_ptr<void, NodeFreer>;
using OwnedText = std::unique_ptr<char, MemoryFreer>;

OwnedNode parse(std::string_view bytes) {
  if (bytes.empty() || !std::in_range<std::uint32_t>(bytes.size())) return nullptr;
  if (sim::holdsTooManyContainers(bytes)) return nullptr;
  plist_t node = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  return OwnedNode(node);
}

PropertyListValue valueOf(plist_t node) {
  if (plist_get_node_type(node) != PLIST_STRING) return PropertyListOther{};
  char* raw = nullptr;
  plist_get_string_val(node, &raw);
  const OwnedText text(raw);
  if (!text) return PropertyListOther{};
  return std::string(text.get());
}

PropertyList entriesOf(plist_t dictionary) {
  PropertyList entries;
  plist_dict_iter raw = nullptr;
  plist_dict_new_iter(dictionary, &raw);
  const std::unique_ptr<void, MemoryFreer> iterator(raw);
  for (;;) {
    char* rawKey = nullptr;
    plist_t value = nullptr;  // belongs to the dictionary
    plist_dict_next_item(dictionary, iterator.get(), &rawKey, &value);
    const OwnedText key(rawKey);
    if (!key || value == nullptr) return entries;
    entries.insert_or_assign(key.get(), valueOf(value));
  }
}

}  // namespace

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  try {
    const OwnedNode top = parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!top || plist_get_node_type(top.get()) != PLIST_DICT) return std::nullopt;
    return entriesOf(top.get());
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace halvo
