// What the program says when the system does not let it read the log.
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/LogFollower.h"

namespace halvo {
namespace {

class LogFollowerFaultTest : public testing::Test {
 protected:
  std::string newLines() {
    std::ostringstream out;
    follower.printNewLines(out);
    return out.str();
  }

  TemporaryDirectory directory;
  const std::string path = directory.makeFile("install.log");
  LogFollower follower{path};
};

TEST_F(LogFollowerFaultTest, ALogThatIsNotForThisUserIsMentionedOnceAndShownWhenItIs) {
  std::ofstream(path) << "first\n";
  const SystemCallFault fault("open", EACCES, 1, 2);

  EXPECT_EQ(newLines(),
            "halvo-app: The log " + path + " cannot be shown: Permission denied. What the helper does goes on.\n");
  EXPECT_EQ(newLines(), "");
  EXPECT_EQ(newLines(), "  first\n");
}

TEST_F(LogFollowerFaultTest, LinesThatCannotBeReadAreShownLater) {
  std::ofstream(path) << "first\n";
  const SystemCallFault fault("pread", EIO);

  EXPECT_EQ(newLines(),
            "halvo-app: The log " + path + " cannot be shown: Input/output error. What the helper does goes on.\n");
  EXPECT_EQ(newLines(), "  first\n");
}

TEST_F(LogFollowerFaultTest, ALineThatIsAddedWhileTheLogIsReadIsShownTheNextTime) {
  std::ofstream log(path);
  log << "first\n" << std::flush;
  EXPECT_EQ(newLines(), "  first\n");
  log << "second\n" << std::flush;
  const SystemCallHook somebody("pread", 1, [&] { log << "third\n" << std::flush; });

  EXPECT_EQ(newLines(), "  second\n");
  EXPECT_EQ(newLines(), "  third\n");
}

TEST_F(LogFollowerFaultTest, ALogThatBecomesShorterWhileItIsReadShowsWhatThereWas) {
  std::ofstream(path) << "first\n";
  const SystemCallFault fault("pread", 0);

  EXPECT_EQ(newLines(), "");
  EXPECT_EQ(newLines(), "  first\n");
}

}  // namespace
}  // namespace halvo
