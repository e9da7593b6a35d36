// What is left of a package's copy that the system does not let be made: nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/PrivateCopy.h"

namespace halvo {
namespace {

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

TEST_F(PrivateCopyFaultTest, AnInterruptedWriteGoesOn) {
  const SystemCallFault fault("write", EINTR);

  EXPECT_TRUE(std::holds_alternative<std::unique_ptr<const PrivateCopy>>(PrivateCopy::of(package, temporary)));
}

}  // namespace
}  // namespace halvo
