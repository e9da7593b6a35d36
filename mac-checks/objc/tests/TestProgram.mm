// The test program's entry: leaves out the tests that the build names, and has an autorelease pool around every test,
// so that what a test leaves behind is let go of before the next one looks.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <string>

extern "C" void* objc_autoreleasePoolPush();
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace {

class PoolPerTest final : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*info*/) override { pool_ = objc_autoreleasePoolPush(); }
  void OnTestEnd(const testing::TestInfo& /*info*/) override { objc_autoreleasePoolPop(pool_); }

  void* pool_ = nullptr;
};

std::string withoutThoseLeftOut(const std::string& filter) {
  const std::string leftOut = HALVO_LEFT_OUT;
  if (leftOut.empty()) return filter;
  const bool alreadyLeavesSomeOut = filter.find('-') != std::string::npos;
  return filter + (alreadyLeavesSomeOut ? ":" : "-") + leftOut;
}

}  // namespace

// What the sanitizers must not hold against this program: the run time and its Foundation keep caches for ever, and
// take their own locks in orders that no thread of ours can meet. They are built without the sanitizers, so that the
// thread sanitizer sees neither how Foundation hands its own objects from thread to thread nor that the last release
// of an object comes after all others: it takes the end of an object for a race with its earlier use.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:libgnustep-base.so\n"; }

extern "C" const char* __tsan_default_suppressions() {
  return "deadlock:libobjc.so\n"
         "deadlock:libgnustep-base.so\n"
         "race:libgnustep-base.so\n"
         "race:^objc_release$\n";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(filter, withoutThoseLeftOut(GTEST_FLAG_GET(filter)));
  testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
  return RUN_ALL_TESTS();
}
