// Weak references that become nil, for a run time without them: one table of who points where, cleared when an object
// is deallocated. Used by tests only; built without ARC.
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <map>
#include <mutex>
#include <set>

extern "C" id objc_retain(id object);
extern "C" id objc_autorelease(id object);
extern "C" void objc_destroyWeak(id* slot);

namespace {

struct Table {
  std::recursive_mutex mutex;
  std::map<id, std::set<id*>> slots;  // guarded by mutex
};

// Never destroyed: objects die after static destructors, too.
Table& table() {
  static auto* const instance = new Table;
  return *instance;
}

using Dealloc = void (*)(id, SEL);
using AnyFunction = void (*)();  // what a cast between unlike function types has to go through

Dealloc originalDealloc;

void clearReferencesThenDealloc(id self, SEL selector) {
  {
    const std::lock_guard lock(table().mutex);
    const auto found = table().slots.find(self);
    if (found != table().slots.end()) {
      for (id* const slot : found->second) *slot = nil;
      table().slots.erase(found);
    }
  }
  originalDealloc(self, selector);
}

void watchDeallocations() {
  static const bool watching = [] {
    const Method dealloc = class_getInstanceMethod([NSObject class], @selector(dealloc));
    originalDealloc = reinterpret_cast<Dealloc>(reinterpret_cast<AnyFunction>(method_getImplementation(dealloc)));
    const auto replacement = reinterpret_cast<AnyFunction>(clearReferencesThenDealloc);
    method_setImplementation(dealloc, reinterpret_cast<IMP>(replacement));
    return true;
  }();
  static_cast<void>(watching);
}

}  // namespace

extern "C" {

id objc_initWeak(id* slot, id object) {
  watchDeallocations();
  const std::lock_guard lock(table().mutex);
  *slot = object;
  if (object != nil) table().slots[object].insert(slot);
  return object;
}

void objc_destroyWeak(id* slot) {
  const std::lock_guard lock(table().mutex);
  if (*slot != nil) table().slots[*slot].erase(slot);
  *slot = nil;
}

id objc_storeWeak(id* slot, id object) {
  const std::lock_guard lock(table().mutex);
  objc_destroyWeak(slot);
  return objc_initWeak(slot, object);
}

id objc_loadWeakRetained(id* slot) {
  const std::lock_guard lock(table().mutex);
  return objc_retain(*slot);
}

id objc_loadWeak(id* slot) { return objc_autorelease(objc_loadWeakRetained(slot)); }

void objc_copyWeak(id* to, id* from) {
  const std::lock_guard lock(table().mutex);
  objc_initWeak(to, *from);
}

void objc_moveWeak(id* to, id* from) {
  const std::lock_guard lock(table().mutex);
  objc_initWeak(to, *from);
  objc_destroyWeak(from);
}

}  // extern "C"
