// Adds the bounded read of a value, which the package lacks.
#pragma once

#include_next <Foundation/NSValue.h>

@interface NSValue (HalvoBoundedRead)

// Raises NSInvalidArgumentException when `size` is not the size of the value's type.
- (void)getValue:(void*)value size:(NSUInteger)size;

@end
