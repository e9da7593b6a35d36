#include "client/Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "HalvoHelperXPC/Version.h"
#include "client/testing/ScriptedHelper.h"

namespace halvo {
namespace {

using testing::IsEmpty;

// A disk that takes this many bytes.
class FullDisk final : public std::streambuf {
 public:
  explicit FullDisk(int room) : room_(room) {}

 private:
  int_type overflow(int_type byte) override { return room_-- > 0 ? byte : traits_type::eof(); }

  int room_;
};

// Takes everything, and cannot keep it.
class LateFullDisk final : public std::streambuf {
  int_type overflow(int_type byte) override { return byte; }
  int sync() override { return -1; }
};

class ProgramTest : public testing::Test {
 protected:
  ExitStatus run(const std::vector<std::string>& words) { return runWith(words, out); }

  ExitStatus runWith(const std::vector<std::string>& words, std::ostream& output) {
    const auto connect = [this] { return Conversation([this] { return std::make_unique<ScriptedClient>(helper); }); };
    return runProgram(words, connect, {output, err});
  }

  std::shared_ptr<ScriptedHelper> helper = std::make_shared<ScriptedHelper>();
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(ProgramTest, ARequestIsMadeAndItsReplyPrinted) {
  EXPECT_EQ(run({"ping"}), ExitStatus::success);

  EXPECT_EQ(out.str(), "{\"ok\":true,\"helper_version\":6,\"build_abi\":1}\n");
  EXPECT_EQ(err.str(), "");
}

TEST_F(ProgramTest, TheVersionIsThatOfTheBuildAndOfTheProtocol) {
  EXPECT_EQ(run({"--version"}), ExitStatus::success);

  EXPECT_EQ(out.str(), "halvo-app " + std::string(kHalvoVersion) + ", protocol version 6\n");
  EXPECT_EQ(err.str(), "");
  EXPECT_THAT(helper->requests, IsEmpty());
}

TEST_F(ProgramTest, TheHelpGoesToStandardOutput) {
  EXPECT_EQ(run({"--help"}), ExitStatus::success);

  EXPECT_EQ(out.str(), helpText());
  EXPECT_EQ(err.str(), "");
  EXPECT_THAT(helper->requests, IsEmpty());
}

TEST_F(ProgramTest, TheRegistrationIsLookedAtWithoutTheHelper) {
  const Surroundings waiting{.out = out, .err = err, .registration = {.look = [](std::string_view) {
                                                       return DaemonStatus::requiresApproval;
                                                     }}};
  const auto connect = []() -> Conversation { throw std::logic_error("the helper is asked"); };

  EXPECT_EQ(runProgram({"status"}, connect, waiting), ExitStatus::unauthorized);

  EXPECT_EQ(out.str(), "requires-approval\n");
  EXPECT_THAT(err.str(), testing::StartsWith("halvo-app: The helper is registered and needs approval in System "
                                             "Settings. "));
}

TEST_F(ProgramTest, WrongUsageIsExplainedAndAsksTheHelperNothing) {
  EXPECT_EQ(run({"explode\n"}), ExitStatus::usage);

  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(err.str(), "halvo-app: 'explode\\012' is not a request; see halvo-app --help\n");
  EXPECT_THAT(helper->requests, IsEmpty());
}

struct UnwritableRow {
  const char* name;
  std::vector<std::string> words;
};

class UnwritableOutput : public ProgramTest, public testing::WithParamInterface<UnwritableRow> {};

TEST_P(UnwritableOutput, IsAnErrorOfItsOwn) {
  FullDisk disk(5);
  std::ostream full(&disk);

  EXPECT_EQ(runWith(GetParam().words, full), ExitStatus::unwritableOutput);

  EXPECT_EQ(err.str(), "halvo-app: Standard output could not be written to the end.\n");
}

TEST_P(UnwritableOutput, IsNoticedWhenTheLastOfTheTextLeavesTheProgram) {
  LateFullDisk disk;
  std::ostream full(&disk);

  EXPECT_EQ(runWith(GetParam().words, full), ExitStatus::unwritableOutput);

  EXPECT_EQ(err.str(), "halvo-app: Standard output could not be written to the end.\n");
}

INSTANTIATE_TEST_SUITE_P(Table, UnwritableOutput,
                         testing::Values(UnwritableRow{"Reply", {"ping"}}, UnwritableRow{"Help", {"--help"}},
                                         UnwritableRow{"Version", {"--version"}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ProgramTest, AStatusThatCannotBePrintedIsStillExplained) {
  FullDisk disk(0);
  std::ostream full(&disk);
  const Surroundings registered{
      .out = full, .err = err, .registration = {.look = [](std::string_view) { return DaemonStatus::enabled; }}};
  const auto connect = []() -> Conversation { throw std::logic_error("the helper is asked"); };

  EXPECT_EQ(runProgram({"status"}, connect, registered), ExitStatus::unwritableOutput);

  EXPECT_EQ(err.str(),
            "halvo-app: The helper is registered, and the system starts it for the next request, such as \"halvo-app "
            "ping\".\nhalvo-app: Standard output could not be written to the end.\n");
}

TEST_F(ProgramTest, ARefusalThatCannotBePrintedStaysARefusal) {
  helper->textReply = R"({"code":"audio_active"})";
  FullDisk disk(0);
  std::ostream full(&disk);

  EXPECT_EQ(runWith({"legacy", "prepare-removal"}, full), ExitStatus::refused);

  EXPECT_THAT(err.str(), testing::EndsWith("halvo-app: Standard output could not be written to the end.\n"));
}

struct StatusRow {
  const char* name;
  ExitStatus status;
  int number;
};

class ExitStatusNumber : public testing::TestWithParam<StatusRow> {};

TEST_P(ExitStatusNumber, IsTheDocumentedOne) { EXPECT_EQ(static_cast<int>(GetParam().status), GetParam().number); }

INSTANTIATE_TEST_SUITE_P(Table, ExitStatusNumber,
                         testing::Values(StatusRow{"Success", ExitStatus::success, 0},
                                         StatusRow{"Refused", ExitStatus::refused, 1},
                                         StatusRow{"Unauthorized", ExitStatus::unauthorized, 2},
                                         StatusRow{"Unreachable", ExitStatus::unreachable, 3},
                                         StatusRow{"Interrupted", ExitStatus::interrupted, 4},
                                         StatusRow{"HelperTooOld", ExitStatus::helperTooOld, 5},
                                         StatusRow{"Usage", ExitStatus::usage, 64},
                                         StatusRow{"UnusableInput", ExitStatus::unusableInput, 66},
                                         StatusRow{"UnwritableOutput", ExitStatus::unwritableOutput, 74},
                                         StatusRow{"NoReplyInTime", ExitStatus::noReplyInTime, 75},
                                         StatusRow{"InterruptedByUser", ExitStatus::interruptedByUser, 130}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
