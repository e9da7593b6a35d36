#include "platform/SystemLog.h"

#import <Foundation/Foundation.h>

#import "platform/mac/FoundationText.h"

namespace halvo {

void halvoSystemLog(std::string_view line) {
  @autoreleasepool {
    NSLog(@"%@", foundationText(line));
  }
}

}  // namespace halvo
