// Lets objects that clang compiled under ARC for a modern Objective-C run time load into GCC's run time, which lays
// modules out otherwise and knows no instance variables that move. Used by tests only. Built without ARC for GCC's run
// time; the linker's --wrap hands every module to __wrap___objc_exec_class before the run time sees it.
#import <Foundation/Foundation.h>
#import <objc/message.h>
#include <unwind.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

// The modern layout, as far as it is touched here.
struct Ivar {
  const char* name;
  const char* type;
  int offset;
};

struct IvarList {
  int count;
  Ivar first[1];
};

struct ProtocolList;

struct ProtocolRecord {
  std::size_t layout;  // becomes the class pointer once the run time has taken the record in
  const char* name;
  ProtocolList* adopted;
};

struct ProtocolList {
  ProtocolList* next;
  std::size_t count;
  ProtocolRecord* first[1];
};

struct ClassRecord {
  void* isa;
  const char* superclassName;
  const char* name;
  long version;
  unsigned long info;
  long size;  // negative: the instance variables of this class alone
  IvarList* ivars;
  void* methods;
  void* dispatchTable;
  void* subclasses;
  void* siblings;
  ProtocolList* protocols;
  void* collectorInfo;
  long abiVersion;
  int** ivarOffsets;  // one variable for each instance variable, from which compiled code reads where it is
};

struct CategoryRecord {
  const char* name;
  const char* className;
  void* instanceMethods;
  void* classMethods;
  ProtocolList* protocols;
};

struct SymbolTable {
  unsigned long selectorCount;
  void* selectors;
  unsigned short classCount;
  unsigned short categoryCount;
  void* definitions[1];  // classes, then categories
};

struct Module {
  unsigned long version;
  unsigned long size;
  const char* name;
  SymbolTable* symbols;
};

constexpr std::size_t kModernProtocolLayout = 3;
constexpr std::size_t kOldProtocolLayout = 2;
constexpr unsigned long kOldModuleVersion = 8;

// The fields that the old layout has lead in both.
void relabelProtocols(ProtocolList* list) {
  for (; list != nullptr; list = list->next) {
    for (std::size_t i = 0; i < list->count; ++i) {
      ProtocolRecord* const protocol = list->first[i];
      if (protocol->layout != kModernProtocolLayout) continue;
      protocol->layout = kOldProtocolLayout;
      relabelProtocols(protocol->adopted);
    }
  }
}

// Places the instance variables of `type` behind those of its superclass, whose size only the running program knows.
void placeIvars(ClassRecord* type) {
  if (type->size > 0) return;
  const Class superclass = objc_lookUpClass(type->superclassName);
  if (superclass == Nil) {
    std::fprintf(stderr, "%s: its superclass %s is not loaded yet\n", type->name, type->superclassName);
    std::abort();
  }
  const int base = static_cast<int>(class_getInstanceSize(superclass));
  type->size = base - type->size;
  if (type->ivars == nullptr) return;
  for (int i = 0; i < type->ivars->count; ++i) {
    type->ivars->first[i].offset += base;
    *type->ivarOffsets[i] += base;
  }
}

void toOldLayout(Module* module) {
  SymbolTable* const symbols = module->symbols;
  module->version = kOldModuleVersion;
  module->size = sizeof(Module);
  for (unsigned i = 0; i < symbols->classCount; ++i) {
    auto* const type = static_cast<ClassRecord*>(symbols->definitions[i]);
    relabelProtocols(type->protocols);
    placeIvars(type);
  }
  for (unsigned i = 0; i < symbols->categoryCount; ++i) {
    relabelProtocols(static_cast<CategoryRecord*>(symbols->definitions[symbols->classCount + i])->protocols);
  }
}

// What modern call sites expect back from a look-up.
struct Slot {
  Class owner;
  Class cachedFor;
  const char* types;
  int version;
  IMP method;
};

thread_local Slot slot;

}  // namespace

// Without a subclass of this name anywhere the run time leaves @protocol() objects uninitialised.
@interface __ObjC_Protocol_Holder_Ugly_Hack : NSObject
@end
@implementation __ObjC_Protocol_Holder_Ugly_Hack
@end

extern "C" {

void __real___objc_exec_class(Module* module);

void __wrap___objc_exec_class(Module* module) {
  if (module->version == 9 || module->version == 10) toOldLayout(module);
  __real___objc_exec_class(module);
}

Slot* objc_msg_lookup_sender(id* receiver, SEL selector, id /*sender*/) {
  slot.method = objc_msg_lookup(*receiver, selector);
  return &slot;
}

Slot* objc_slot_lookup_super(struct objc_super* super, SEL selector) {
  slot.method = objc_msg_lookup_super(super, selector);
  return &slot;
}

_Unwind_Reason_Code __gxx_personality_v0(int version, _Unwind_Action actions, _Unwind_Exception_Class exceptionClass,
                                         _Unwind_Exception* exception, _Unwind_Context* context);

_Unwind_Reason_Code __gnustep_objcxx_personality_v0(int version, _Unwind_Action actions,
                                                    _Unwind_Exception_Class exceptionClass,
                                                    _Unwind_Exception* exception, _Unwind_Context* context) {
  return __gxx_personality_v0(version, actions, exceptionClass, exception, context);
}

}  // extern "C"
