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

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(filter, withoutThoseLeftOut(GTEST_FLAG_GET(filter)));
  testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
  return RUN_ALL_TESTS();
}
