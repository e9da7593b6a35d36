// The entry points that ARC code calls, for a run time that has none of them, weak references that become nil included.
// Used by tests only; built without ARC.
#include <Block.h>
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <set>

extern "C" void* _NSConcreteStackBlock[];
extern "C" void* _NSConcreteGlobalBlock[];
extern "C" void* _NSConcreteMallocBlock[];

namespace {

// Blocks are no objects here: a message to one crashes.
bool isBlock(id object) {
  void* const isa = *reinterpret_cast<void**>(object);
  return isa == _NSConcreteMallocBlock || isa == _NSConcreteGlobalBlock || isa == _NSConcreteStackBlock;
}

// Nor are protocols objects that could be counted; they live forever.
bool isProtocol(id object) {
  static const Class protocolClass = objc_lookUpClass("Protocol");
  return *reinterpret_cast<Class*>(object) == protocolClass;
}

bool isUncounted(id object) { return object == nil || isProtocol(object); }

}  // namespace

// Keeps a block until the autorelease pool that it was put into is drained.
@interface HalvoAutoreleasedBlock : NSObject {
 @public
  id block;
}
@end

@implementation HalvoAutoreleasedBlock
- (void)dealloc {
  _Block_release(block);
  [super dealloc];
}
@end

extern "C" {

id objc_retainBlock(id block) { return block == nil ? nil : static_cast<id>(_Block_copy(block)); }

id objc_retain(id object) {
  if (isUncounted(object)) return object;
  return isBlock(object) ? objc_retainBlock(object) : [object retain];
}

void objc_release(id object) {
  if (isUncounted(object)) return;
  if (isBlock(object)) return _Block_release(object);
  [object release];
}

id objc_autorelease(id object) {
  if (isUncounted(object)) return object;
  if (!isBlock(object)) return [object autorelease];
  HalvoAutoreleasedBlock* const holder = [[[HalvoAutoreleasedBlock alloc] init] autorelease];
  holder->block = object;
  return object;
}

id objc_autoreleaseReturnValue(id object) { return objc_autorelease(object); }
id objc_retainAutorelease(id object) { return objc_autorelease(objc_retain(object)); }
id objc_retainAutoreleaseReturnValue(id object) { return objc_retainAutorelease(object); }
id objc_retainAutoreleasedReturnValue(id object) { return objc_retain(object); }

id objc_storeStrong(id* slot, id value) {
  const id old = *slot;
  *slot = objc_retain(value);
  objc_release(old);
  return value;
}

void* objc_autoreleasePoolPush() { return [[NSAutoreleasePool alloc] init]; }
void objc_autoreleasePoolPop(void* pool) { [static_cast<NSAutoreleasePool*>(pool) release]; }

// The run time's own accessors of synthesised properties send messages to blocks.
void __wrap_objc_setProperty(id self, SEL /*selector*/, std::ptrdiff_t offset, id value, bool /*atomic*/, bool copy) {
  id* const slot = reinterpret_cast<id*>(reinterpret_cast<char*>(self) + offset);
  const id old = *slot;
  const bool copies = copy && value != nil && !isBlock(value);
  *slot = copies ? [value copy] : objc_retain(value);
  objc_release(old);
}

id __wrap_objc_getProperty(id self, SEL /*selector*/, std::ptrdiff_t offset, bool /*atomic*/) {
  return objc_retainAutorelease(*reinterpret_cast<id*>(reinterpret_cast<char*>(self) + offset));
}

}  // extern "C"

extern "C" void objc_destroyWeak(id* slot);

namespace {

// Who points where, cleared when an object is deallocated.
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

void objc_copyWeak(id* to, id* from) {
  const std::lock_guard lock(table().mutex);
  objc_initWeak(to, *from);
}

}  // extern "C"
