// Files that the helper keeps or reads, on a disk that is full or broken.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/RecordedSystemLog.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "main/InstalledDriver.h"
#include "main/OperationLog.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

class OperationLogFaultTest : public testing::Test {
 protected:
  RecordedSystemLog systemLog_;
  TemporaryDirectory directory_;
  std::string path_ = directory_.makeFile("install.log", "earlier\n");
};

TEST_F(OperationLogFaultTest, IgnoresAFullDisk) {
  const SystemCallFault full("write", ENOSPC);

  OperationLog(path_).write("y");

  EXPECT_EQ(full.calls(), 1);
  EXPECT_EQ(contentsOf(path_), "earlier\n");
  EXPECT_THAT(systemLog_.lines(), ElementsAre("halvo-helper: y"));
}

TEST_F(OperationLogFaultTest, WritesNothingToAFileThatItCannotJudge) {
  const SystemCallFault unknown("fstat", EIO);

  OperationLog(path_).write("y");

  EXPECT_EQ(contentsOf(path_), "earlier\n");
}

TEST_F(OperationLogFaultTest, AppendsToAFileThatAnotherOperationMadeMeanwhile) {
  const SystemCallFault missingAtFirst("open", ENOENT);

  OperationLog(path_).write("y");

  EXPECT_THAT(contentsOf(path_), testing::StartsWith("earlier\n"));
  EXPECT_THAT(contentsOf(path_), EndsWith(": y\n"));
}

TEST_F(OperationLogFaultTest, CreatesNothingThroughALinkThatIsPlantedMeanwhile) {
  const std::string log = directory_.path("new.log");
  const SystemCallHook planted("open", 2, [&] { directory_.makeLink("new.log", directory_.path("elsewhere")); });

  OperationLog(log).write("y");

  EXPECT_FALSE(isNamed(directory_.path("elsewhere")));
}

TEST_F(OperationLogFaultTest, IsNotInheritedByAToolThatIsStartedMeanwhile) {
  const std::vector<int> before = inheritableDescriptors();
  std::vector<int> meanwhile;
  const SystemCallHook tool("write", 1, [&] { meanwhile = inheritableDescriptors(); });

  OperationLog(path_).write("y");

  EXPECT_EQ(meanwhile, before);
}

class DriverVersionFaultTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
  std::string plist_ = directory_.makeFile(
      "Info.plist", "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>2</string></dict></plist>");
};

TEST_F(DriverVersionFaultTest, IsAbsentWhenTheFileCannotBeRead) {
  const SystemCallFault broken("read", EIO);

  EXPECT_EQ(halvoInstalledDriverVersion(plist_), std::nullopt);
}

TEST_F(DriverVersionFaultTest, IsAbsentWhenTheFileCanBeReadOnlyInPart) {
  const SystemCallFault broken("read", EIO, 2, 2);

  EXPECT_EQ(halvoInstalledDriverVersion(plist_), std::nullopt);
}

TEST_F(DriverVersionFaultTest, IsReadFromAFileThatNoToolInherits) {
  const std::vector<int> before = inheritableDescriptors();
  std::vector<int> meanwhile;
  const SystemCallHook tool("read", 1, [&] { meanwhile = inheritableDescriptors(); });

  EXPECT_EQ(halvoInstalledDriverVersion(plist_), "2");

  EXPECT_EQ(meanwhile, before);
}

TEST_F(DriverVersionFaultTest, IsReadOnAfterAnInterruption) {
  const SystemCallFault interrupted("read", EINTR, 1, 2);

  EXPECT_EQ(halvoInstalledDriverVersion(plist_), "2");
}

TEST_F(DriverVersionFaultTest, IsAbsentWhenTheFileCannotBeJudged) {
  const SystemCallFault unknown("fstat", EIO);

  EXPECT_EQ(halvoInstalledDriverVersion(plist_), std::nullopt);
}

}  // namespace
}  // namespace halvo
