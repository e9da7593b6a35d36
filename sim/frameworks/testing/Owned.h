// Releases a CoreFoundation object at the end of a test.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace halvo::sim {

struct ReferenceReleaser {
  void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, ReferenceReleaser>;

}  // namespace halvo::sim
