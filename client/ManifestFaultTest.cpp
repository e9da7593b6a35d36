// What the program says when the system does not let it read the manifest.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/ProcessState.h"
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

TEST_F(ManifestFaultTest, AnInterruptedReadOfAStreamGoesOn) {
  const StandardInputFrom input(manifest);
  const SystemCallFault fault("read", EINTR);

  EXPECT_THAT(readManifest("-"), VariantWith<std::string>("{\"driver_version\":\"2.1\"}"));
}

// One byte more than the largest tells that there is more; the rest may have no end.
TEST_F(ManifestFaultTest, OfAStreamNoMoreIsReadThanTellsThatItIsTooLarge) {
  const StandardInputFrom input(directory.makeSparseFile("large", 3'145'728));

  static_cast<void>(readManifest("-"));

  EXPECT_EQ(::lseek(STDIN_FILENO, 0, SEEK_CUR), 1'048'577);
}

// A FIFO that holds a manifest and whose writer goes when that has been read.
class FifoFaultTest : public ManifestFaultTest {
 protected:
  FifoFaultTest() { static_cast<void>(::write(writer.get(), "{}", 2) < 0); }

  const std::string fifo = directory.makeFifo("fifo");
  UniqueDescriptor writer{::open(fifo.c_str(), O_RDWR | O_CLOEXEC)};
  const SystemCallHook end{"read", 2, [this] { writer.close(); }};
};

TEST_F(FifoFaultTest, IsClosedWhenItWasRead) {
  const SystemCallFault closed("close", EIO, 0, 0);

  EXPECT_THAT(readManifest(fifo), VariantWith<std::string>("{}"));

  EXPECT_EQ(closed.calls(), 2) << "the writer's end, and ours";
}

TEST_F(FifoFaultTest, ThatMayNotBeOpenedIsRefusedWithWhatToDo) {
  const SystemCallFault fault("open", EACCES);

  EXPECT_THAT(readManifest(fifo), VariantWith<UnreadableManifest>(Field(
                                      &UnreadableManifest::reason,
                                      EndsWith("/fifo cannot be read. Permission denied: check its permissions."))));
}

TEST_F(FifoFaultTest, IsNotInheritedByAProgramThatIsStartedMeanwhile) {
  const std::vector<int> inheritable = inheritableDescriptors();
  std::vector<int> meanwhile;
  const SystemCallHook program("read", 1, [&] { meanwhile = inheritableDescriptors(); });

  EXPECT_THAT(readManifest(fifo), VariantWith<std::string>("{}"));

  EXPECT_EQ(meanwhile, inheritable);
}

}  // namespace
}  // namespace halvo
