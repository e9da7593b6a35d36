// What every CoreFoundation object is here: a type and a count of references. The opaque structures of the headers
// derive from it, and an object's address is that of its base.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <cstdint>
#include <memory>

#include "sim/frameworks/corefoundation/LivingObjects.h"

namespace halvo::sim {

class CFObject {
 public:
  CFObject(const CFObject&) = delete;
  CFObject& operator=(const CFObject&) = delete;
  virtual ~CFObject();

  CFTypeID type() const { return type_; }
  void retain() const;
  // Destroys the object with the last reference.
  void release() const;
  // By value, for what may be a key.
  virtual bool equals(const CFObject& other) const { return this == &other; }

 protected:
  enum class Lifetime { counted, constant };

  constexpr explicit CFObject(CFTypeID type, Lifetime lifetime = Lifetime::counted) : type_(type), lifetime_(lifetime) {
    if (lifetime == Lifetime::counted) countCreated();
  }

 private:
  CFTypeID type_;
  Lifetime lifetime_;
  mutable std::atomic<std::int64_t> references_{1};
};

// Holds a constant object that is initialised before any code runs and never destroyed, so that threads which outlive
// main() can still use it.
template <typename T>
union Constant {
  template <typename... Arguments>
  constexpr explicit Constant(Arguments... arguments) : object(arguments...) {}
  constexpr ~Constant() {}
  T object;
};

inline const CFObject& objectOf(CFTypeRef reference) { return *static_cast<const CFObject*>(reference); }

template <typename T>
const T* objectAs(CFTypeRef reference, CFTypeID type) {
  return reference != nullptr && objectOf(reference).type() == type ? static_cast<const T*>(reference) : nullptr;
}

struct Releaser {
  void operator()(CFTypeRef reference) const { objectOf(reference).release(); }
};
using OwnedObject = std::unique_ptr<const void, Releaser>;

// Says on standard error which rule of the platform the program broke, and ends it.
[[noreturn]] void abortWithReason(const char* reason) noexcept;

}  // namespace halvo::sim
