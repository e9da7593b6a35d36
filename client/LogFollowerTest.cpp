#include "client/LogFollower.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

class LogFollowerTest : public testing::Test {
 protected:
  void append(const std::string& text) { std::ofstream(path, std::ios::app) << text; }

  std::string newLines(LogFollower& follower) {
    std::ostringstream out;
    follower.printNewLines(out);
    return out.str();
  }

  TemporaryDirectory directory;
  std::string path = directory.path("install.log");
};

TEST_F(LogFollowerTest, LinesFromBeforeAreNotShown) {
  append("old\n");
  LogFollower follower(path);

  append("new\n");

  EXPECT_EQ(newLines(follower), "  new\n");
}

TEST_F(LogFollowerTest, EachLineIsShownOnce) {
  LogFollower follower(path);
  append("first\n");
  newLines(follower);

  append("second\n");

  EXPECT_EQ(newLines(follower), "  second\n");
  EXPECT_EQ(newLines(follower), "");
}

TEST_F(LogFollowerTest, ALineIsShownWhenItIsComplete) {
  LogFollower follower(path);
  append("half a");

  EXPECT_EQ(newLines(follower), "");

  append(" line\n");
  EXPECT_EQ(newLines(follower), "  half a line\n");
}

TEST_F(LogFollowerTest, AFileThatIsMadeLaterIsShownFromItsBeginning) {
  LogFollower follower(path);
  EXPECT_EQ(newLines(follower), "");

  append("first\n");

  EXPECT_EQ(newLines(follower), "  first\n");
}

TEST_F(LogFollowerTest, AFileThatBecameShorterIsShownFromItsBeginning) {
  append("a long line from before\n");
  LogFollower follower(path);

  std::ofstream(path, std::ios::trunc) << "after rotation\n";

  EXPECT_EQ(newLines(follower), "  after rotation\n");
}

TEST_F(LogFollowerTest, ControlCharactersAreShownAsCodes) {
  LogFollower follower(path);

  append("staging /a\x1B[2J\n");

  EXPECT_EQ(newLines(follower), "  staging /a\\033[2J\n");
}

TEST_F(LogFollowerTest, NoLogHasNoLines) {
  LogFollower follower("");

  EXPECT_EQ(newLines(follower), "");
}

}  // namespace
}  // namespace halvo
