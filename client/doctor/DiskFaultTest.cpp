// What the doctor sees of a file that the disk does not give out.
#include <gtest/gtest.h>

#include <cerrno>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/doctor/Disk.h"

namespace halvo {
namespace {

class DiskFaultTest : public testing::Test {
 protected:
  DiskFaultTest() { root.makeFile("file", "0123456789"); }

  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(DiskFaultTest, AFileThatCannotBeReadIsUnreadableAndNothingOfItIsShown) {
  const SystemCallFault fault("pread", EIO, 2, 2);

  const Contents contents = disk.head("/file", "", 20);

  EXPECT_EQ(contents.sight, Sight::unreadable);
  EXPECT_TRUE(contents.isFile);
  EXPECT_EQ(contents.bytes, "");
}

TEST_F(DiskFaultTest, AnInterruptedReadIsMadeAgain) {
  const SystemCallFault fault("pread", EINTR);

  EXPECT_EQ(disk.head("/file", "", 4).bytes, "0123");
}

}  // namespace
}  // namespace halvo
