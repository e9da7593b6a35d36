#include <cstring>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/Instrumentation.h"

using halvo::sim::abortWithReason;

bool __CFData::equals(const CFObject& other) const { return bytes == static_cast<const __CFData&>(other).bytes; }

namespace {

const __CFData& dataOf(CFDataRef reference) {
  const auto* data = halvo::sim::objectAs<__CFData>(reference, halvo::sim::kDataType);
  if (data == nullptr) abortWithReason("a data function was given something that is not data");
  return *data;
}

}  // namespace

extern "C" {

CFTypeID CFDataGetTypeID(void) { return halvo::sim::kDataType; }

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
  if (halvo::sim::observe("CFDataCreate")) return nullptr;
  return length < 0 ? nullptr : new __CFData(std::vector<UInt8>(bytes, bytes + length));
}

CFIndex CFDataGetLength(CFDataRef theData) { return static_cast<CFIndex>(dataOf(theData).bytes.size()); }

const UInt8* CFDataGetBytePtr(CFDataRef theData) { return dataOf(theData).bytes.data(); }

void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8* buffer) {
  const auto& bytes = dataOf(theData).bytes;
  const auto length = static_cast<CFIndex>(bytes.size());
  if (range.location < 0 || range.length < 0 || range.length > length - range.location) {
    abortWithReason("CFDataGetBytes was given a range outside the data");
  }
  if (range.length > 0) std::memcpy(buffer, bytes.data() + range.location, static_cast<std::size_t>(range.length));
}

}  // extern "C"
