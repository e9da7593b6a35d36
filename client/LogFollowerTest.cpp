#include "client/LogFollower.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

class LogFollowerTest : public testing::Test {
 protected:
  void append(const std::string& text) { std::ofstream(path, std::ios::app) << text; }
  void truncateTo(const std::string& text) { std::ofstream(path, std::ios::trunc) << text; }

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

TEST_F(LogFollowerTest, SeveralLinesAreShownAtOnce) {
  LogFollower follower(path);

  append("first\n\nthird\n");

  EXPECT_EQ(newLines(follower), "  first\n  \n  third\n");
}

TEST_F(LogFollowerTest, ALineIsShownWhenItIsComplete) {
  LogFollower follower(path);
  append("whole\nhalf a");

  EXPECT_EQ(newLines(follower), "  whole\n");

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

  truncateTo("after rotation\n");

  EXPECT_EQ(newLines(follower), "  after rotation\n");
}

TEST_F(LogFollowerTest, AFileThatIsEmptiedGoesOnFromThere) {
  append("before\n");
  LogFollower follower(path);
  truncateTo("");
  EXPECT_EQ(newLines(follower), "");

  append("after\n");

  EXPECT_EQ(newLines(follower), "  after\n");
}

TEST_F(LogFollowerTest, AFileThatReplacesItIsShownFromItsBeginningHoweverLongItIs) {
  append("old\n");
  LogFollower follower(path);

  std::filesystem::rename(directory.makeFile("fresh", "the first line\nand the second\n"), path);

  EXPECT_EQ(newLines(follower), "  the first line\n  and the second\n");
}

TEST_F(LogFollowerTest, AFileThatReplacesAReplacementIsShownTheSameWay) {
  append("old\n");
  LogFollower follower(path);
  std::filesystem::rename(directory.makeFile("fresh", "second file\n"), path);
  newLines(follower);

  std::filesystem::rename(directory.makeFile("fresher", "the file after it\n"), path);

  EXPECT_EQ(newLines(follower), "  the file after it\n");
}

// A file system may give the new file the number of the one that is gone, as it does here.
TEST_F(LogFollowerTest, AFileThatTakesThePlaceOfOneThatVanishedIsShownFromItsBeginning) {
  append("before\n");
  LogFollower follower(path);
  std::filesystem::rename(path, directory.path("aside"));
  EXPECT_EQ(newLines(follower), "");

  std::filesystem::rename(directory.path("aside"), path);
  append("after\n");

  EXPECT_EQ(newLines(follower), "  before\n  after\n");
}

TEST_F(LogFollowerTest, ALogThatCannotBeShownIsMentionedOnce) {
  LogFollower follower(directory.makeFifo("install.log"));

  EXPECT_EQ(newLines(follower),
            "halvo-app: The log " + path + " cannot be shown: it is no regular file. What the helper does goes on.\n");
  EXPECT_EQ(newLines(follower), "");
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
