// The entry points that ARC code calls, for a run time that has none of them. Used by tests only; built without ARC.
#include <Block.h>
#import <Foundation/Foundation.h>

#include <cstddef>

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
id objc_unsafeClaimAutoreleasedReturnValue(id object) { return object; }

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
