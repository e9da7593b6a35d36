// A string of exactly the given UTF-16 code units, ill-formed ones included: other ways of making a string may refuse
// or repair them.
#pragma once

#import <Foundation/Foundation.h>

#include <vector>

@interface HalvoCodeUnitString : NSString
- (instancetype)initWithUnits:(std::vector<unichar>)units;
@end
