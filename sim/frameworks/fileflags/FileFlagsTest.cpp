#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

class FileFlagsTest : public testing::Test {
 protected:
  void SetUp() override {
    directory_.write("file", "x");
    if (set("file", UF_IMMUTABLE) != 0) {
      GTEST_SKIP() << "no immutable files here: they take root of the machine, and a file system with flags and "
                      "extended attributes ("
                   << std::strerror(errno) << ")";
    }
    set("file", 0);
  }

  void TearDown() override {
    set("file", 0);
    set("folder", 0);
  }

  std::string path(const char* name) const { return (directory_.path() / name).string(); }

  int set(const char* name, std::uint32_t flags) const {
    const int item = ::open(path(name).c_str(), O_RDONLY | O_CLOEXEC);
    const int status = ::fchflags(item, flags);
    ::close(item);
    return status;
  }

  std::uint32_t flagsOf(const char* name, int how = O_RDONLY) const {
    struct attrlist wanted {};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = ATTR_CMN_FLAGS;
    std::uint32_t answer[2] = {};
    const int item = ::open(path(name).c_str(), how | O_CLOEXEC);
    EXPECT_EQ(::fgetattrlist(item, &wanted, answer, sizeof answer, 0), 0);
    ::close(item);
    EXPECT_EQ(answer[0], sizeof answer);
    return answer[1];
  }

  int remove(const char* name) const { return ::unlink(path(name).c_str()) == 0 ? 0 : errno; }

  TemporaryDirectory directory_;
};

struct FlagRow {
  const char* name;
  std::uint32_t flags;
};

class EachFlag : public FileFlagsTest, public testing::WithParamInterface<FlagRow> {};

TEST_P(EachFlag, IsReadBackAndKeepsTheFileFromBeingRemoved) {
  ASSERT_EQ(set("file", GetParam().flags), 0);

  EXPECT_EQ(flagsOf("file"), GetParam().flags);
  EXPECT_EQ(flagsOf("file", O_SYMLINK), GetParam().flags);
  EXPECT_EQ(remove("file"), EPERM);
}

TEST_P(EachFlag, CanBeTakenBack) {
  ASSERT_EQ(set("file", GetParam().flags), 0);
  ASSERT_EQ(set("file", 0), 0);

  EXPECT_EQ(flagsOf("file"), 0U);
  EXPECT_EQ(remove("file"), 0);
}

TEST_P(EachFlag, KeepsWhatIsInADirectory) {
  directory_.write("folder/inside", "x");
  ASSERT_EQ(set("folder", GetParam().flags), 0);

  EXPECT_EQ(remove("folder/inside"), EPERM);
}

INSTANTIATE_TEST_SUITE_P(Table, EachFlag,
                         testing::Values(FlagRow{"UserImmutable", UF_IMMUTABLE}, FlagRow{"UserAppend", UF_APPEND},
                                         FlagRow{"SystemImmutable", SF_IMMUTABLE}, FlagRow{"SystemAppend", SF_APPEND},
                                         FlagRow{"BothOwners", UF_IMMUTABLE | SF_IMMUTABLE},
                                         FlagRow{"BothKinds", UF_IMMUTABLE | UF_APPEND}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(FileFlagsTest, FlagsThatAreNotSimulatedAreRefused) {
  EXPECT_EQ(set("file", 0x8000), -1);
  EXPECT_EQ(errno, ENOTSUP);
}

TEST_F(FileFlagsTest, ALinkHasNoneAndIsNotFollowed) {
  ASSERT_EQ(set("file", UF_IMMUTABLE), 0);
  ASSERT_EQ(::symlink("file", path("link").c_str()), 0);

  EXPECT_EQ(flagsOf("link", O_SYMLINK), 0U);
}

}  // namespace
}  // namespace halvo::sim
