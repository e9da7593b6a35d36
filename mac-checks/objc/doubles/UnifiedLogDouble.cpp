#include "mac-checks/objc/doubles/UnifiedLogDouble.h"

#include <os/log.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <span>
#include <string_view>
#include <utility>

struct os_log_s {};

extern "C" {
struct os_log_s _os_log_default;
}

namespace halvo::sim {
namespace {

std::mutex mutex;
std::vector<std::string> entries;  // guarded by mutex

// One packed argument: a byte with its kind above and its flags below, a byte with its size, its value.
constexpr unsigned kPublic = 0x2;
constexpr unsigned kText = 0x2;

std::string takeArgument(std::span<const std::uint8_t>& packed) {
  const unsigned kind = packed[0] >> 4U;
  const unsigned flags = packed[0] & 0xFU;
  const std::size_t size = packed[1];
  const char* text = nullptr;
  if (kind != kText || size != sizeof text) return "<no text>";
  std::memcpy(&text, packed.data() + 2, size);
  packed = packed.subspan(2 + size);
  return (flags & kPublic) != 0 ? text : "<private>";
}

// "%s", "%{public}s" and the like at the start of `format`; 0 for anything else.
std::size_t conversionLength(std::string_view format) {
  const std::size_t letter = format.starts_with("%{") ? format.find('}') + 1 : 1;
  return letter < format.size() && letter != 0 && format[letter] == 's' ? letter + 1 : 0;
}

std::string render(std::string_view format, std::span<const std::uint8_t> packed) {
  std::string entry;
  packed = packed.subspan(2);  // flags of the whole, number of arguments
  while (!format.empty()) {
    const std::size_t plain = std::min(format.find('%'), format.size());
    entry += format.substr(0, plain);
    format.remove_prefix(plain);
    if (format.empty()) break;
    const std::size_t conversion = conversionLength(format);
    if (conversion == 0) return "no such conversion: " + std::string(format);
    entry += takeArgument(packed);
    format.remove_prefix(conversion);
  }
  return entry;
}

}  // namespace

LogCapture::LogCapture() {
  const std::lock_guard lock(mutex);
  entries.clear();
}

std::vector<std::string> LogCapture::lines() const {
  const std::lock_guard lock(mutex);
  return entries;
}

}  // namespace halvo::sim

bool os_log_type_enabled(os_log_t log, os_log_type_t /*type*/) { return log == OS_LOG_DEFAULT; }

void _os_log_impl(void* /*program*/, os_log_t /*log*/, os_log_type_t type, const char* format, uint8_t* packed,
                  uint32_t size) {
  using namespace halvo::sim;
  std::string entry = type == OS_LOG_TYPE_DEFAULT ? render(format, {packed, size}) : "not at the default level";
  const std::lock_guard lock(mutex);
  entries.push_back(std::move(entry));
}
