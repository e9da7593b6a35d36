// The test program's entry: an autorelease pool around every test, so that what a test leaves behind is let go of
// before the next one looks.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <optional>

extern "C" void* objc_autoreleasePoolPush();
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace {

class PoolPerTest final : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*info*/) override { pool_ = objc_autoreleasePoolPush(); }
  void OnTestEnd(const testing::TestInfo& /*info*/) override { objc_autoreleasePoolPop(pool_); }

  void* pool_ = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
  return RUN_ALL_TESTS();
}
