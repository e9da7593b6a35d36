// An installer that fails on a disk that was filled to one of many levels, or that becomes read-only at some call: what
// was whole stays whole or is wholly replaced, and reply and log say what happened.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "HalvoHelper/system/RealProcessRunner.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::SizeIs;

class InstallOnSmallDiskTest : public testing::Test {
 protected:
  void SetUp() override {
    const ProcessResult mounted = onSmallDisk("true");
    if (mounted.code != 0) GTEST_SKIP() << "this process may not mount file systems: " << mounted.output;
  }

  // A line for each install.
  std::vector<std::string> installs(const std::string& way) const {
    const std::string probe = "'" HALVO_SMALL_DISK_PROBE "' '" + directory_.path("disk") + "' " + way;
    std::istringstream output(onSmallDisk(probe).output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);) lines.push_back(line);
    return lines;
  }

  static auto refused() {
    return AnyOf(kNotStaged + "REFUSED: could not stage", kNotStaged + "REFUSED: could not create staging dir");
  }

 private:
  inline static const std::string kNotStaged =
      R"({"code":"untrusted_package","reason":"staging_failed"}: old old old old; saved - - - -; log: )";

  ProcessResult onSmallDisk(const std::string& command) const {
    const std::string mount = "mount -t tmpfs -o size=4m none '" + directory_.makeDirectory("disk") + "'";
    return RealProcessRunner().run("/usr/bin/unshare", {"-m", "/bin/sh", "-c", mount + " && " + command});
  }

  TemporaryDirectory directory_;
};

const std::string kLog = "log: installer failed; rolling back from";

TEST_F(InstallOnSmallDiskTest, FullWhileStagingOrSaving) {
  EXPECT_THAT(installs("spare"),
              AllOf(SizeIs(49),
                    Each(AnyOf(refused(), MatchesRegex("rolled_back: (old|new) (old|new) (old|new) "
                                                       "(old|new); saved (old|-) (old|-) (old|-) (old|-); " +
                                                       kLog))),
                    IsSupersetOf({"rolled_back: old old old old; saved old old old old; " + kLog,
                                  "rolled_back: new new new new; saved - - - -; " + kLog}),
                    Contains(refused())));
}

TEST_F(InstallOnSmallDiskTest, FullWhileTheInstallerWrites) {
  EXPECT_THAT(
      installs("large"),
      AllOf(SizeIs(49), Each(AnyOf(refused(), MatchesRegex("rolled_back: (old|new|-) (old|new|-) (old|new|-) "
                                                           "(old|new|-); saved (old|-) (old|-) (old|-) (old|-); " +
                                                           kLog)))));
}

// The place of a part is cleared before the saved one is copied back, so that a part may be absent; it is saved then.
TEST_F(InstallOnSmallDiskTest, FullWhileCopyingBack) {
  EXPECT_THAT(installs("crowded"),
              AllOf(SizeIs(49),
                    Each(AnyOf(refused(), MatchesRegex("rolled_back: (old|new|-) (old|new|-) (old|new|-) "
                                                       "(old|new|-); saved (old|-) (old|-) (old|-) (old|-); " +
                                                       kLog))),
                    Contains("rolled_back: - - - -; saved old old old old; " + kLog)));
}

TEST_F(InstallOnSmallDiskTest, ReadOnlyFromSomeCallOn) {
  EXPECT_THAT(installs("read-only"),
              AllOf(SizeIs(testing::Gt(24U)),
                    Each(AnyOf(refused(), MatchesRegex(".*: (old|new) (old|new) (old|new) (old|new); "
                                                       "saved (old|-) (old|-) (old|-) (old|-); log: .*"))),
                    Contains("rolled_back: new new old old; saved old old old old; " + kLog)));
}

}  // namespace
}  // namespace halvo
