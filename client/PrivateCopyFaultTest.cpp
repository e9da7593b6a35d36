// What is left of a package's copy that the system does not let be made: nothing.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/InterruptHandling.h"
#include "client/PrivateCopy.h"

namespace halvo {
namespace {

// What the system names as the user's folder for temporary files; nothing where that is empty.
std::string namedFolder;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the linker's wrapper reads it.

using testing::ElementsAre;

struct FaultRow {
  const char* name;
  const char* function;
  int call;
  int error;
  const char* why;
};

class PrivateCopyFaultTest : public testing::Test {
 protected:
  const TemporaryDirectory directory;
  const std::string temporary = directory.makeDirectory("T");
  const std::string package = directory.makeFile("a.pkg", std::string(3'000'000, 'x'));
};

class FailingCopy : public PrivateCopyFaultTest, public testing::WithParamInterface<FaultRow> {};

TEST_P(FailingCopy, SaysWhyAndLeavesNothing) {
  const FaultRow& row = GetParam();
  const SystemCallFault fault(row.function, row.error, row.call, row.call);

  const auto copy = PrivateCopy::of(package, temporary);

  ASSERT_TRUE(std::holds_alternative<NoPrivateCopy>(copy));
  EXPECT_THAT(std::get<NoPrivateCopy>(copy).reason, testing::HasSubstr(row.why));
  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

INSTANTIATE_TEST_SUITE_P(Table, FailingCopy,
                         testing::Values(FaultRow{"ProtectedFolder", "open", 1, EPERM, "(Operation not permitted)"},
                                         FaultRow{"BrokenDisk", "pread", 2, EIO, "(Input/output error)"},
                                         FaultRow{"NoFileInTheFolder", "open", 2, EDQUOT, "(Disk quota exceeded)"},
                                         FaultRow{"FullDisk", "write", 2, ENOSPC, "(No space left on device)"},
                                         FaultRow{"FullDiskAtTheEnd", "close", 1, ENOSPC, "(No space left on device)"}),
                         [](const auto& row) { return std::string(row.param.name); });

class HinderedWrite : public PrivateCopyFaultTest, public testing::WithParamInterface<FaultRow> {};

TEST_P(HinderedWrite, GoesOn) {
  const SystemCallFault fault(GetParam().function, GetParam().error, GetParam().call, GetParam().call);

  const auto copy = PrivateCopy::of(package, temporary);

  ASSERT_TRUE(std::holds_alternative<std::unique_ptr<const PrivateCopy>>(copy));
  EXPECT_EQ(contentsOf(std::get<std::unique_ptr<const PrivateCopy>>(copy)->path()), contentsOf(package));
}

INSTANTIATE_TEST_SUITE_P(Table, HinderedWrite,
                         testing::Values(FaultRow{"Interrupted", "write", 2, EINTR, ""},
                                         FaultRow{"OfNothing", "write", 2, 0, ""}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PrivateCopyFaultTest, TheFirstOfTwoFailuresIsTold) {
  const SystemCallFault full("write", ENOSPC);
  const SystemCallFault broken("close", EIO);

  const auto copy = PrivateCopy::of(package, temporary);

  EXPECT_THAT(std::get<NoPrivateCopy>(copy).reason, testing::HasSubstr("(No space left on device)"));
}

TEST_F(PrivateCopyFaultTest, AFolderThatWasNotMadeIsNotRemoved) {
  const std::string somebodys = directory.makeDirectory("T/halvo-app.XXXXXX");
  const SystemCallFault fault("mkdtemp", EACCES);

  const auto copy = PrivateCopy::of(package, temporary);

  EXPECT_THAT(std::get<NoPrivateCopy>(copy).reason, testing::HasSubstr("(Permission denied)"));
  EXPECT_TRUE(isNamed(somebodys));
}

// Nobody's link is followed, nobody's FIFO is waited for, and what is there already is not written. Some of this
// another flag grants as well: none is left out, since systems differ in what one flag implies of another.
TEST_F(PrivateCopyFaultTest, BothFilesAreOpenedWithEveryGuardThereIs) {
  const NotedOpenings openings;

  static_cast<void>(PrivateCopy::of(package, temporary));

  EXPECT_THAT(openings.flags(), ElementsAre(O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC,
                                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC));
}

TEST_F(PrivateCopyFaultTest, ASignalAsSoonAsTheFolderIsThereRemovesIt) {
  const auto interrupted = [this] {
    endWithStatusOnInterrupt();
    const SystemCallHook hook("return of mkdtemp", 1, [] { ::raise(SIGINT); });
    static_cast<void>(PrivateCopy::of(package, temporary));
  };

  EXPECT_EXIT(interrupted(), testing::ExitedWithCode(130), "");

  EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

TEST_F(PrivateCopyFaultTest, OnceTheCopyIsGoneASignalRemovesNothing) {
  const auto interrupted = [this] {
    endWithStatusOnInterrupt();
    static_cast<void>(PrivateCopy::of(package, temporary));
    const SystemCallHook hook("unlink", 1, [] { ::_exit(1); });
    ::raise(SIGINT);
  };

  EXPECT_EXIT(interrupted(), testing::ExitedWithCode(130), "");
}

TEST_F(PrivateCopyFaultTest, TheUsersTemporaryFolderIsTheOneThatTheSystemNames) {
  namedFolder = "/var/folders/zz/zyxvpxvq6csfxvn_n0000000000000/T/";

  EXPECT_EQ(userTemporaryFolder(), "/var/folders/zz/zyxvpxvq6csfxvn_n0000000000000/T/");
}

TEST_F(PrivateCopyFaultTest, WhereTheSystemNamesNoTemporaryFolderEverybodysIsTaken) {
  namedFolder = "";

  EXPECT_EQ(userTemporaryFolder(), "/tmp");
}

}  // namespace
}  // namespace halvo

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker gives the names.
extern "C" {

char* __real_mkdtemp(char* pattern);
char* __wrap_mkdtemp(char* pattern) {
  if (const auto* fault = halvo::SystemCallFault::of("mkdtemp")) {
    errno = fault->error();
    return nullptr;
  }
  char* const made = __real_mkdtemp(pattern);
  halvo::SystemCallHook::announce("return of mkdtemp");
  return made;
}

// As confstr(3): the whole text with its NUL counts, whether or not it fits.
std::size_t __wrap_halvo_sim_confstr(int /*name*/, char* buffer, std::size_t size) {
  if (halvo::namedFolder.empty()) return 0;
  if (size > 0) buffer[halvo::namedFolder.copy(buffer, size - 1)] = '\0';
  return halvo::namedFolder.size() + 1;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
