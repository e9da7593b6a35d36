// What tools get and answer when the helper itself was started in an odd state.
#include "HalvoHelper/system/InheritedState.h"

#include <gtest/gtest.h>

#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

// Reads its input to the end, writes on both streams and fails.
constexpr const char* kTool = "/bin/sh -c 'cat; echo out; echo trouble >&2; exit 7'";

// Runs the probe through a shell that redirects its descriptors; answers the probe's report. `mode` says what the probe
// does before anything else.
std::string reportFrom(const std::string& mode, const std::string& redirects, const std::string& tool) {
  const TemporaryDirectory directory;
  const std::string held = directory.makeFile("held", "the helper's own\n");
  const std::string report = directory.path("report");
  const std::string probe = std::string(HALVO_RUNNER_PROBE) + " " + mode + " " + report + " " + held + " " + tool;

  RealProcessRunner().run("/bin/sh", {"-c", "exec " + probe + " " + redirects});

  return contentsOf(report);
}

struct ClosedRow {
  const char* name;
  const char* redirects;
};

class ClosedStandardDescriptors : public testing::TestWithParam<ClosedRow> {};

TEST_P(ClosedStandardDescriptors, LoseNoOutputAndLeakNoFile) {
  EXPECT_EQ(reportFrom("as-is", GetParam().redirects, kTool), "7\nout\ntrouble\n");
}

TEST_P(ClosedStandardDescriptors, AreOpenInTheTool) {
  EXPECT_EQ(reportFrom("as-is", GetParam().redirects, std::string(HALVO_CHILD_REPORT) + " descriptors"), "0\n0 1 2 ");
}

TEST_P(ClosedStandardDescriptors, ReadAndWriteNothingOnceTheStateIsInOrder) {
  EXPECT_EQ(reportFrom("start", GetParam().redirects, kTool), "7\nout\ntrouble\n");
}

TEST_P(ClosedStandardDescriptors, AreNoFilesOfOursAndWritableOnceTheStateIsInOrder) {
  EXPECT_EQ(reportFrom("start", GetParam().redirects, ""), "3 writable");
}

INSTANTIATE_TEST_SUITE_P(Table, ClosedStandardDescriptors,
                         testing::Values(ClosedRow{"Input", "<&-"}, ClosedRow{"Output", "</dev/null >&-"},
                                         ClosedRow{"Error", "</dev/null 2>&-"}, ClosedRow{"InputAndOutput", "<&- >&-"},
                                         ClosedRow{"InputAndError", "<&- 2>&-"},
                                         ClosedRow{"OutputAndError", "</dev/null >&- 2>&-"},
                                         ClosedRow{"All", "<&- >&- 2>&-"}),
                         [](const auto& row) { return row.param.name; });

TEST(InheritedStateTest, AnIgnoredChildSignalCostsTheExitStatus) {
  EXPECT_EQ(reportFrom("ignoring-children as-is", "</dev/null", kTool), "-1\nout\ntrouble\n");
}

TEST(InheritedStateTest, AnIgnoredChildSignalCostsNothingOnceTheStateIsInOrder) {
  EXPECT_EQ(reportFrom("ignoring-children start", "</dev/null", kTool), "7\nout\ntrouble\n");
}

TEST(InheritedStateTest, DescriptorsThatAreOpenStayAsTheyAre) {
  const TemporaryDirectory directory;
  const std::string input = directory.makeFile("input", "from the parent\n");

  EXPECT_EQ(reportFrom("start", "<" + input, kTool), "7\nfrom the parent\nout\ntrouble\n");
}

}  // namespace
}  // namespace halvo
