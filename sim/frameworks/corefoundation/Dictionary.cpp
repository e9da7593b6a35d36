#include <algorithm>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/Instrumentation.h"

using halvo::sim::abortWithReason;

namespace {

template <typename CallBacks>
void retainItem(const CallBacks& callBacks, const void* item) {
  if (callBacks.retain != nullptr) callBacks.retain(nullptr, item);
}

template <typename CallBacks>
void releaseItem(const CallBacks& callBacks, const void* item) {
  if (callBacks.release != nullptr) callBacks.release(nullptr, item);
}

bool same(const CFDictionaryKeyCallBacks& callBacks, const void* left, const void* right) {
  return left == right || (callBacks.equal != nullptr && callBacks.equal(left, right) != 0);
}

const halvo::sim::CFObject& itemOf(const void* value) {
  if (value == nullptr) abortWithReason("a dictionary was given a null key or value");
  return halvo::sim::objectOf(value);
}

const void* retainObject(CFAllocatorRef, const void* value) {
  itemOf(value).retain();
  return value;
}
void releaseObject(CFAllocatorRef, const void* value) { CFRelease(value); }
Boolean equalObjects(const void* left, const void* right) {
  return itemOf(left).type() == itemOf(right).type() && itemOf(left).equals(itemOf(right)) ? 1 : 0;
}

const __CFDictionary& dictionaryOf(CFDictionaryRef reference) {
  const auto* dictionary = halvo::sim::objectAs<__CFDictionary>(reference, halvo::sim::kDictionaryType);
  if (dictionary == nullptr) abortWithReason("a dictionary function was given something that is not a dictionary");
  return *dictionary;
}

}  // namespace

__CFDictionary::__CFDictionary(const CFDictionaryKeyCallBacks* forKeys, const CFDictionaryValueCallBacks* forValues,
                               bool canChange)
    : CFObject(halvo::sim::kDictionaryType), isMutable(canChange) {
  if (forKeys != nullptr) keyCallBacks = *forKeys;
  if (forValues != nullptr) valueCallBacks = *forValues;
}

__CFDictionary::~__CFDictionary() {
  for (const auto& [key, value] : entries) {
    releaseItem(keyCallBacks, key);
    releaseItem(valueCallBacks, value);
  }
}

void __CFDictionary::set(const void* key, const void* value) {
  retainItem(valueCallBacks, value);
  const auto found =
      std::ranges::find_if(entries, [&](const auto& entry) { return same(keyCallBacks, entry.first, key); });
  if (found != entries.end()) {
    releaseItem(valueCallBacks, found->second);
    found->second = value;
    return;
  }
  retainItem(keyCallBacks, key);
  entries.emplace_back(key, value);
}

const void* const* __CFDictionary::find(const void* key) const {
  const auto found =
      std::ranges::find_if(entries, [&](const auto& entry) { return same(keyCallBacks, entry.first, key); });
  return found == entries.end() ? nullptr : &found->second;
}

extern "C" {

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0,       retainObject, releaseObject,
                                                                nullptr, equalObjects, nullptr};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, retainObject, releaseObject, nullptr,
                                                                    equalObjects};

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  if (halvo::sim::observe("CFDictionaryCreate")) return nullptr;
  auto* dictionary = new __CFDictionary(keyCallBacks, valueCallBacks, false);
  for (CFIndex i = 0; i < numValues; ++i) {
    // The first of two equal keys wins at creation; only setting replaces.
    if (dictionary->find(keys[i]) == nullptr) dictionary->set(keys[i], values[i]);
  }
  return dictionary;
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex, const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
  if (halvo::sim::observe("CFDictionaryCreateMutable")) return nullptr;
  return new __CFDictionary(keyCallBacks, valueCallBacks, true);
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
  if (!dictionaryOf(theDict).isMutable)
    abortWithReason("CFDictionarySetValue was given a dictionary that cannot change");
  theDict->set(key, value);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  return static_cast<CFIndex>(dictionaryOf(theDict).entries.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values) {
  std::size_t index = 0;
  for (const auto& [key, value] : dictionaryOf(theDict).entries) {
    if (keys != nullptr) keys[index] = key;
    if (values != nullptr) values[index] = value;
    ++index;
  }
}

}  // extern "C"
