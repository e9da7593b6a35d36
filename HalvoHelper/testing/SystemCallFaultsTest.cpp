#include "HalvoHelper/testing/SystemCallFaults.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

namespace halvo {
namespace {

TEST(SystemCallFaultsTest, OnlyTheChosenCallsFail) {
  const SystemCallFault fault("unlink", EIO, 2, 3);

  EXPECT_EQ(::unlink("/absent/file"), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(::unlink("/absent/file"), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(::unlink("/absent/file"), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(::unlink("/absent/file"), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(fault.calls(), 4);
}

TEST(SystemCallFaultsTest, AnotherThreadIsNotTouched) {
  const SystemCallFault fault("unlink", EIO);

  std::thread([] {
    EXPECT_EQ(::unlink("/absent/file"), -1);
    EXPECT_EQ(errno, ENOENT);
  }).join();

  EXPECT_EQ(fault.calls(), 0);
}

TEST(SystemCallFaultsTest, AFaultEndsWithItsOwner) {
  { const SystemCallFault fault("unlink", EIO); }

  EXPECT_EQ(::unlink("/absent/file"), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST(SystemCallFaultsTest, AWriteCanAnswerNothing) {
  const SystemCallFault fault("write", 0);

  EXPECT_EQ(::write(STDOUT_FILENO, "x", 1), 0);
}

TEST(SystemCallFaultsTest, AHookActsBeforeTheChosenCall) {
  int before = 0;
  const SystemCallFault counted("unlink", EIO, 0, 0);
  const SystemCallHook hook("unlink", 2, [&] { before = counted.calls(); });

  ::unlink("/absent/file");
  ::unlink("/absent/file");
  ::unlink("/absent/file");

  EXPECT_EQ(before, 1);
}

}  // namespace
}  // namespace halvo
