// What the program says when the system does not let it read the manifest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/Manifest.h"

namespace halvo {
namespace {

using testing::EndsWith;
using testing::Field;
using testing::VariantWith;

struct FaultRow {
  const char* name;
  const char* function;
  int error;
  const char* reason;
};

class ManifestFaultTest : public testing::Test {
 protected:
  TemporaryDirectory directory;
  const std::string manifest = directory.makeFile("m.json", "{\"driver_version\":\"2.1\"}");
};

class FailingManifest : public ManifestFaultTest, public testing::WithParamInterface<FaultRow> {};

TEST_P(FailingManifest, IsRefusedWithWhatToDo) {
  const SystemCallFault fault(GetParam().function, GetParam().error);

  EXPECT_THAT(readManifest(manifest),
              VariantWith<UnreadableManifest>(Field(&UnreadableManifest::reason, EndsWith(GetParam().reason))));
}

INSTANTIATE_TEST_SUITE_P(
    Table, FailingManifest,
    testing::Values(
        FaultRow{"NotForThisUser", "open", EACCES, "cannot be read. Permission denied: check its permissions."},
        FaultRow{"ProtectedFolder", "open", EPERM, "cannot be read. Operation not permitted: check its permissions."},
        FaultRow{"NameTooLong", "open", ENAMETOOLONG, "cannot be read. File name too long: check the path."},
        FaultRow{"TooManyOpenFiles", "open", EMFILE, "cannot be read. Too many open files: try again."},
        FaultRow{"NothingKnownOfIt", "fstat", EIO, "cannot be read. Input/output error: try again."},
        FaultRow{"BrokenDisk", "pread", EIO,
                 "cannot be read. Reading failed (Input/output error): try again with a copy of it."},
        FaultRow{"CutWhileItWasRead", "pread", 0, "cannot be read. It changed while it was read: try again."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ManifestFaultTest, AnInterruptedReadGoesOn) {
  const SystemCallFault fault("pread", EINTR);

  EXPECT_THAT(readManifest(manifest), VariantWith<std::string>("{\"driver_version\":\"2.1\"}"));
}

// Such a file has the size 0 and holds text all the same.
TEST_F(ManifestFaultTest, AFileThatHoldsMoreThanItSaidIsRefused) {
  EXPECT_THAT(readManifest("/proc/self/status"),
              VariantWith<UnreadableManifest>(
                  Field(&UnreadableManifest::reason, EndsWith("It changed while it was read: try again."))));
}

TEST_F(ManifestFaultTest, TheFileIsClosed) {
  const SystemCallFault fault("close", EIO);

  static_cast<void>(readManifest(manifest));

  EXPECT_EQ(fault.calls(), 1);
}

}  // namespace
}  // namespace halvo
