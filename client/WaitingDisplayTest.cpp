#include "client/WaitingDisplay.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

class WaitingDisplayTest : public testing::Test {
 protected:
  Surroundings shownOn(bool terminal) {
    return {.out = out,
            .err = err,
            .logOf = [this](const CommandLine&) { return log; },
            .errIsTerminal = terminal,
            .now = [this] { return std::chrono::steady_clock::time_point(passed); }};
  }

  std::string shown() { return err.str(); }

  TemporaryDirectory directory;
  const std::string log = directory.makeFile("log", "");
  const CommandLine finalize{.verb = Verb::finalize};
  std::chrono::milliseconds passed{1000};
  std::ostringstream out;
  std::ostringstream err;
};

constexpr const char* kNotice =
    "halvo-app: Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does "
    "not "
    "tell whether another one comes first.\n";

TEST_F(WaitingDisplayTest, WithoutALookNothingIsShown) {
  const Surroundings surroundings = shownOn(true);
  { const WaitingDisplay display(finalize, surroundings); }

  EXPECT_EQ(shown(), "");
}

TEST_F(WaitingDisplayTest, OnATerminalTheTimeIsTheLastLineAndGoesInTheEnd) {
  {
    const Surroundings surroundings = shownOn(true);
    WaitingDisplay display(finalize, surroundings);
    passed = std::chrono::milliseconds(3999);
    display.look();
    std::ofstream(log) << "begun\n";
    passed = std::chrono::milliseconds(63000);
    display.look();
  }

  EXPECT_EQ(shown(),
            std::string(kNotice) + "halvo-app: waiting for 2 s\r\x1B[K  begun\nhalvo-app: waiting for 62 s\r\x1B[K");
}

TEST_F(WaitingDisplayTest, ElsewhereNoTimeIsShown) {
  {
    const Surroundings surroundings = shownOn(false);
    WaitingDisplay display(finalize, surroundings);
    display.look();
    std::ofstream(log) << "begun\n";
    display.look();
  }

  EXPECT_EQ(shown(), std::string(kNotice) + "  begun\n");
}

}  // namespace
}  // namespace halvo
