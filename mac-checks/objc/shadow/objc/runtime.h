// The package's object_getClass takes a plain struct, which an ARC object does not convert to.
#pragma once

#if __has_feature(objc_nonfragile_abi)
#define object_getClass(p) unused_getClass(struct objc_object* object)
#include_next <objc/runtime.h>
#undef object_getClass

static inline Class object_getClass(id object) { return unused_getClass((__bridge struct objc_object*)object); }
#else
#include_next <objc/runtime.h>
#endif
