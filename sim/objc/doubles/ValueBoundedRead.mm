#import <Foundation/Foundation.h>

@implementation NSValue (HalvoBoundedRead)

- (void)getValue:(void*)value size:(NSUInteger)size {
  NSUInteger actual = 0;
  NSGetSizeAndAlignment(self.objCType, &actual, nullptr);
  if (actual != size) [NSException raise:NSInvalidArgumentException format:@"a value of another size"];
  [self getValue:value];
}

@end
