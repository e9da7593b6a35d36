#include <new>
#include <string_view>
#include <utility>

#include "platform/PropertyList.h"
#include "sim/platform/PropertyLists.h"

namespace halvo {
namespace {

using Node = sim::XMLPropertyListNode;

PropertyListValue valueOf(Node& node) {
  const bool isText = node.kind == Node::Kind::key || node.kind == Node::Kind::string;
  return isText ? PropertyListValue(std::move(node.text)) : PropertyListOther{};
}

std::optional<PropertyList> entriesOf(std::optional<Node> top) {
  if (!top || top->kind != Node::Kind::dictionary) return std::nullopt;
  PropertyList entries;
  for (std::size_t i = 0; i < top->children.size(); i += 2) {
    entries.insert_or_assign(std::move(top->children[i].text), valueOf(top->children[i + 1]));
  }
  return entries;
}

}  // namespace

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  const std::string_view list(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  try {
    return list.starts_with("bplist") ? sim::readBinaryPropertyList(list) : entriesOf(sim::readXMLPropertyList(list));
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace halvo
