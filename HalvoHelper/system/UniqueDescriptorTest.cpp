#include "HalvoHelper/system/UniqueDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

class UniqueDescriptorTest : public testing::Test {
 protected:
  static int opened() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }
  static bool isOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

  const int first = opened();
};

TEST_F(UniqueDescriptorTest, ADescriptorIsClosedWithItsOwner) {
  { const UniqueDescriptor owner(first); }

  EXPECT_FALSE(isOpen(first));
}

TEST_F(UniqueDescriptorTest, AMoveHandsItOn) {
  UniqueDescriptor owner(first);
  {
    const UniqueDescriptor next(std::move(owner));
    EXPECT_EQ(next.get(), first);
    EXPECT_TRUE(isOpen(first));
  }
  EXPECT_FALSE(isOpen(first));
}

TEST_F(UniqueDescriptorTest, WhatAnAssignmentReplacesIsClosed) {
  const int second = opened();
  {
    UniqueDescriptor owner(first);
    owner = UniqueDescriptor(second);
    EXPECT_FALSE(isOpen(first));
    EXPECT_EQ(owner.get(), second);
  }
  EXPECT_FALSE(isOpen(second));
}

TEST_F(UniqueDescriptorTest, WhatIsGivenUpStaysOpen) {
  {
    UniqueDescriptor owner(first);
    EXPECT_EQ(owner.release(), first);
    EXPECT_FALSE(owner.valid());
  }
  EXPECT_TRUE(isOpen(first));
  ::close(first);
}

TEST_F(UniqueDescriptorTest, IsClosedOnceOnly) {
  UniqueDescriptor owner(first);

  EXPECT_TRUE(owner.close());

  EXPECT_FALSE(isOpen(first));
  EXPECT_FALSE(owner.valid());
  EXPECT_TRUE(owner.close());
}

TEST_F(UniqueDescriptorTest, AFailureToCloseIsTold) {
  UniqueDescriptor owner(first);
  ::close(first);

  EXPECT_FALSE(owner.close());
}

}  // namespace
}  // namespace halvo
