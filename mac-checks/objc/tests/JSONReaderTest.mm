// What the port makes of Foundation's reader of JSON when that raises, and what it never asks it about.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <objc/runtime.h>

#include "platform/JSONObject.h"

namespace halvo::sim {
namespace {

int timesAsked = 0;

id raise(id, SEL, NSData*, NSJSONReadingOptions, NSError* __autoreleasing*) {
  ++timesAsked;
  [NSException raise:NSInvalidArgumentException format:@"unreadable"];
  return nil;
}

// While it lives, Foundation's reader raises whatever it is asked.
class RaisingReader {
 public:
  RaisingReader()
      : method_(class_getClassMethod([NSJSONSerialization class], @selector(JSONObjectWithData:options:error:))),
        real_(method_setImplementation(method_, reinterpret_cast<IMP>(raise))) {
    timesAsked = 0;
  }
  RaisingReader(const RaisingReader&) = delete;
  RaisingReader& operator=(const RaisingReader&) = delete;
  ~RaisingReader() { method_setImplementation(method_, real_); }

 private:
  Method method_;
  IMP real_;
};

TEST(JSONReaderTest, AReaderThatRaisesGivesNothing) {
  const RaisingReader reader;

  EXPECT_FALSE(halvoReadJSONObject("{}").has_value());

  EXPECT_EQ(timesAsked, 1);
}

TEST(JSONReaderTest, IllFormedTextIsNotGivenToTheReader) {
  const RaisingReader reader;

  EXPECT_FALSE(halvoReadJSONObject("{\"a\":\"\xFF\"}").has_value());

  EXPECT_EQ(timesAsked, 0);
}

}  // namespace
}  // namespace halvo::sim
