#include <new>
#include <string_view>

#include "platform/PropertyList.h"
#include "sim/platform/BinaryPropertyList.h"
#include "sim/platform/XMLPropertyList.h"

namespace halvo {

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  const std::string_view list(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  try {
    return list.starts_with("bplist") ? sim::readBinaryPropertyList(list) : sim::readXMLPropertyList(list);
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace halvo
