#include "sim/launchd/JobDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string plist(const std::string& entries) {
  return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

const std::string kLabel = "<key>Label</key><string>com.halvo.test</string>";
const std::string kProgram = "<key>Program</key><string>/bin/test</string>";

std::variant<JobDescription, UnusableJob> read(const std::string& text) {
  const TemporaryDirectory folder;
  return readJobDescription(folder.write("test.plist", text));
}

TEST(JobDescriptionTest, ProgramIsAlsoTheOnlyArgument) {
  const auto job = std::get<JobDescription>(read(plist(kLabel + kProgram)));

  EXPECT_EQ(job.label, "com.halvo.test");
  EXPECT_EQ(job.program, "/bin/test");
  EXPECT_THAT(job.arguments, ElementsAre("/bin/test"));
}

TEST(JobDescriptionTest, NothingIsAssumedBeyondTheDefaults) {
  const auto job = std::get<JobDescription>(read(plist(kLabel + kProgram)));

  EXPECT_FALSE(job.keepAlive);
  EXPECT_FALSE(job.runAtLoad);
  EXPECT_EQ(job.throttleInterval, std::chrono::seconds(10));
  EXPECT_EQ(job.exitTimeOut, std::chrono::seconds(20));
  EXPECT_TRUE(job.machServices.empty());
}

TEST(JobDescriptionTest, ProgramArgumentsNameTheProgramWhenProgramIsAbsent) {
  const auto job = std::get<JobDescription>(
      read(plist(kLabel + "<key>ProgramArguments</key><array><string>/bin/a</string><string>-b</string></array>")));

  EXPECT_EQ(job.program, "/bin/a");
  EXPECT_THAT(job.arguments, ElementsAre("/bin/a", "-b"));
}

TEST(JobDescriptionTest, ProgramWinsOverTheFirstArgument) {
  const auto job = std::get<JobDescription>(
      read(plist(kLabel + kProgram + "<key>ProgramArguments</key><array><string>name</string></array>")));

  EXPECT_EQ(job.program, "/bin/test");
  EXPECT_THAT(job.arguments, ElementsAre("name"));
}

TEST(JobDescriptionTest, BundleProgramIsRelativeToTheBundleAroundThePropertyList) {
  const TemporaryDirectory folder;
  const auto file = folder.write("X.app/Contents/Library/LaunchDaemons/test.plist",
                                 plist(kLabel + "<key>BundleProgram</key><string>Contents/MacOS/x</string>"));

  const auto job = std::get<JobDescription>(readJobDescription(file));

  EXPECT_EQ(job.program, folder.path() / "X.app/Contents/MacOS/x");
}

TEST(JobDescriptionTest, ReadsServicesFlagsAndTimes) {
  const auto job = std::get<JobDescription>(
      read(plist(kLabel + kProgram +
                 "<key>MachServices</key><dict><key>a.b</key><true/></dict><key>KeepAlive</key><true/>"
                 "<key>RunAtLoad</key><true/><key>ThrottleInterval</key><integer>3</integer>"
                 "<key>ExitTimeOut</key><integer>2</integer>")));

  EXPECT_THAT(job.machServices, ElementsAre("a.b"));
  EXPECT_TRUE(job.keepAlive);
  EXPECT_TRUE(job.runAtLoad);
  EXPECT_EQ(job.throttleInterval, std::chrono::seconds(3));
  EXPECT_EQ(job.exitTimeOut, std::chrono::seconds(2));
}

TEST(JobDescriptionTest, AMissingFileIsUnusable) {
  EXPECT_THAT(std::get<UnusableJob>(readJobDescription("/nowhere/x.plist")).reason, HasSubstr("cannot be read"));
}

TEST(JobDescriptionTest, ARelativePathIsUnusable) {
  EXPECT_THAT(std::get<UnusableJob>(readJobDescription("x.plist")).reason, HasSubstr("must be absolute"));
}

struct UnusableRow {
  std::string name;
  std::string text;
  std::string reason;
};

class UnusableJobDescription : public testing::TestWithParam<UnusableRow> {};

TEST_P(UnusableJobDescription, SaysWhy) {
  const auto job = read(GetParam().text);

  ASSERT_TRUE(std::holds_alternative<UnusableJob>(job));
  EXPECT_THAT(std::get<UnusableJob>(job).reason, HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnusableJobDescription,
    testing::Values(
        UnusableRow{"Empty", "", "not a property list"}, UnusableRow{"Garbage", "garbage", "not a property list"},
        UnusableRow{"NoDictionary", "<?xml version=\"1.0\"?><plist version=\"1.0\"><string>x</string></plist>",
                    "not a property list with a dictionary"},
        UnusableRow{"CutOff", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + kLabel + kProgram + "</dict>",
                    "not a property list"},
        UnusableRow{"NoLabel", plist(kProgram), "Label is missing"},
        UnusableRow{"LabelWithSlash", plist("<key>Label</key><string>a/b</string>" + kProgram), "Label is missing"},
        UnusableRow{"NoProgram", plist(kLabel), "must name a program"},
        UnusableRow{"RelativeProgram", plist(kLabel + "<key>Program</key><string>test</string>"),
                    "must name a program"},
        UnusableRow{"ArgumentsNoArray", plist(kLabel + kProgram + "<key>ProgramArguments</key><string>x</string>"),
                    "is not an array"},
        UnusableRow{"ArgumentNoString", plist(kLabel + kProgram + "<key>ProgramArguments</key><array><true/></array>"),
                    "not a string"},
        UnusableRow{"ServicesNoDictionary", plist(kLabel + kProgram + "<key>MachServices</key><true/>"),
                    "not a dictionary"},
        UnusableRow{"ServiceWithSlash",
                    plist(kLabel + kProgram + "<key>MachServices</key><dict><key>../x</key><true/></dict>"),
                    "unusable name"},
        UnusableRow{"KeepAliveDictionary", plist(kLabel + kProgram + "<key>KeepAlive</key><dict/>"),
                    "KeepAlive must be a boolean"},
        UnusableRow{"ThrottleText", plist(kLabel + kProgram + "<key>ThrottleInterval</key><string>1</string>"),
                    "ThrottleInterval is not a number"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvo::sim
