// Owns one reference to a CoreFoundation object that a Create or Copy call returned.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace halvo {

// Never called with a null reference, which CFRelease would not survive: unique_ptr deletes nothing when empty.
struct CFReleaser {
  void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

template <typename Ref>
using ScopedCF = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

}  // namespace halvo
