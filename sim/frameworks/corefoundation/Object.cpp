#include "sim/frameworks/corefoundation/Object.h"

#include <cstdio>
#include <cstdlib>

namespace halvo::sim {
namespace {

std::atomic<std::int64_t> living{0};

}  // namespace

void countCreated() noexcept { living.fetch_add(1, std::memory_order_relaxed); }
void countDestroyed() noexcept { living.fetch_sub(1, std::memory_order_relaxed); }
std::int64_t countLiving() noexcept { return living.load(std::memory_order_relaxed); }

CFObject::~CFObject() {
  if (lifetime_ == Lifetime::counted) countDestroyed();
}

void CFObject::retain() const {
  if (lifetime_ == Lifetime::counted) references_.fetch_add(1, std::memory_order_relaxed);
}

void CFObject::release() const {
  if (lifetime_ == Lifetime::counted && references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

void abortWithReason(const char* reason) noexcept {
  static_cast<void>(std::fprintf(stderr, "simulated macOS: %s\n", reason));
  std::abort();
}

}  // namespace halvo::sim

using halvo::sim::abortWithReason;
using halvo::sim::objectOf;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFTypeID CFGetTypeID(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFGetTypeID was given a null reference");
  return objectOf(cf).type();
}

CFTypeRef CFRetain(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFRetain was given a null reference");
  objectOf(cf).retain();
  return cf;
}

void CFRelease(CFTypeRef cf) {
  if (cf == nullptr) abortWithReason("CFRelease was given a null reference");
  objectOf(cf).release();
}

}  // extern "C"
