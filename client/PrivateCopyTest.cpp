#include "client/PrivateCopy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/InterruptHandling.h"

namespace halvo {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class PrivateCopyTest : public testing::Test {
 protected:
  std::unique_ptr<const PrivateCopy> copyOf(const std::string& path) const {
    auto copy = PrivateCopy::of(path, temporary);
    return std::move(std::get<std::unique_ptr<const PrivateCopy>>(copy));
  }
  std::string reasonAgainst(const std::string& path) const {
    return std::get<NoPrivateCopy>(PrivateCopy::of(path, temporary)).reason;
  }
  bool nothingIsLeft() const { return std::filesystem::is_empty(temporary); }

  const TemporaryDirectory directory;
  const std::string temporary = directory.makeDirectory("T");
  const std::string package = directory.makeFile("Halvo 1.pkg", "xar!" + std::string(3'000'000, 'x') + "end");
};

TEST_F(PrivateCopyTest, HoldsWhatThePackageHoldsUnderItsName) {
  const auto copy = copyOf(package);

  EXPECT_THAT(copy->path(), MatchesRegex(temporary + "/halvo-app\\.[A-Za-z0-9]{6}/Halvo 1\\.pkg"));
  EXPECT_EQ(contentsOf(copy->path()), contentsOf(package));
}

struct SizeRow {
  const char* name;
  std::uintmax_t bytes;
};

class PackageOfSize : public PrivateCopyTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(PackageOfSize, IsCopiedWhole) {
  EXPECT_EQ(std::filesystem::file_size(copyOf(directory.makeSparseFile("a.pkg", GetParam().bytes))->path()),
            GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Table, PackageOfSize,
                         testing::Values(SizeRow{"Nothing", 0}, SizeRow{"OneByte", 1},
                                         SizeRow{"LargestOfTheMaker", 256 * 1024 * 1024}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PrivateCopyTest, ASlashAtTheEndOfTheTemporaryFolderIsNotDoubled) {
  const auto copy = PrivateCopy::of(package, temporary + "/");

  EXPECT_THAT(std::get<std::unique_ptr<const PrivateCopy>>(copy)->path(), StartsWith(temporary + "/halvo-app."));
}

TEST_F(PrivateCopyTest, IsForItsUserAlone) {
  const auto copy = copyOf(package);

  EXPECT_EQ(permissionsOf(copy->path()), 0600U);
  EXPECT_EQ(permissionsOf(std::filesystem::path(copy->path()).parent_path().string()), 0700U);
}

TEST_F(PrivateCopyTest, GoesWithItsOwnerAndLeavesThePackage) {
  { const auto copy = copyOf(package); }

  EXPECT_TRUE(nothingIsLeft());
  EXPECT_TRUE(isNamed(package));
}

struct UnfitRow {
  const char* name;
  const char* why;
};

class UnfitPackage : public PrivateCopyTest, public testing::WithParamInterface<UnfitRow> {
 protected:
  UnfitPackage() {
    directory.makeLink("Link", package);
    directory.makeDirectory("Folder");
    directory.makeFifo("Fifo");
    directory.makeSparseFile("TooLarge", 256 * 1024 * 1024 + 1);
  }
};

TEST_P(UnfitPackage, IsNotCopiedAndLeavesNothing) {
  EXPECT_EQ(reasonAgainst(directory.path(GetParam().name)),
            "The package " + directory.path(GetParam().name) +
                " lies in a folder that the system keeps from the helper, and could not be copied out of it (" +
                GetParam().why + "). Put it into another folder, such as /Users/Shared, and try again.");

  EXPECT_TRUE(nothingIsLeft());
}

INSTANTIATE_TEST_SUITE_P(Table, UnfitPackage,
                         testing::Values(UnfitRow{"Link", "Too many levels of symbolic links"},
                                         UnfitRow{"Folder", "it is no regular file"},
                                         UnfitRow{"Fifo", "it is no regular file"},
                                         UnfitRow{"Missing", "No such file or directory"},
                                         UnfitRow{"TooLarge", "File too large"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PrivateCopyTest, WithoutATemporaryFolderThereIsNone) {
  std::filesystem::remove(temporary);
  directory.makeFile("T");

  EXPECT_THAT(reasonAgainst(package), HasSubstr("could not be copied out of it (Not a directory). "));
}

struct SignalRow {
  const char* name;
  int signal;
  bool (*ended)(int);
};

bool endedWith130(int status) { return testing::ExitedWithCode(130)(status); }
bool endedByHangUp(int status) { return testing::KilledBySignal(SIGHUP)(status); }
bool endedByTermination(int status) { return testing::KilledBySignal(SIGTERM)(status); }

class SignalWhileACopyExists : public PrivateCopyTest, public testing::WithParamInterface<SignalRow> {};

TEST_P(SignalWhileACopyExists, EndsTheProcessAndRemovesTheCopy) {
  const auto interrupted = [this] {
    endWithStatusOnInterrupt();
    const auto copy = copyOf(package);
    ::raise(GetParam().signal);
  };

  EXPECT_EXIT(interrupted(), GetParam().ended, "");

  EXPECT_TRUE(nothingIsLeft());
}

INSTANTIATE_TEST_SUITE_P(Table, SignalWhileACopyExists,
                         testing::Values(SignalRow{"Interrupt", SIGINT, endedWith130},
                                         SignalRow{"HangUp", SIGHUP, endedByHangUp},
                                         SignalRow{"Termination", SIGTERM, endedByTermination}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PrivateCopyTest, TheUsersTemporaryFolderIsAnAbsolutePath) {
  EXPECT_THAT(userTemporaryFolder(), StartsWith("/"));
}

}  // namespace
}  // namespace halvo
