// How a file is read that changes under the reader, and what other programs get of it.
#include "client/InputFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "HalvoHelper/testing/ProcessState.h"
#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/InputStream.h"

namespace halvo {
namespace {

class InputFileFaultTest : public testing::Test {
 protected:
  TemporaryDirectory directory;
  const std::string path = directory.makeFile("file", "0123");
  InputFile file{path};
};

TEST_F(InputFileFaultTest, WhatIsAddedMeanwhileIsReadAsFarAsThereIsRoom) {
  const SystemCallHook somebody("pread", 2, [this] { std::ofstream(path, std::ios::app) << "456789"; });

  EXPECT_EQ(file.read(1, 6), "123456");
}

TEST_F(InputFileFaultTest, NothingIsAskedForWhenThereIsNoRoom) {
  const SystemCallFault fault("pread", 0, 0, 0);

  EXPECT_EQ(file.read(1, 3), "123");

  EXPECT_EQ(fault.calls(), 1);
}

TEST_F(InputFileFaultTest, IsNotInheritedByAProgramThatIsStartedMeanwhile) {
  const std::vector<int> inheritable = inheritableDescriptors();

  const InputFile another(path);

  EXPECT_TRUE(another.isOpen());
  EXPECT_EQ(inheritableDescriptors(), inheritable);
}

TEST_F(InputFileFaultTest, OfAStreamNothingIsAskedForEitherWhenThereIsNoRoom) {
  InputStream stream(path);
  const SystemCallFault fault("read", 0, 0, 0);

  EXPECT_EQ(stream.read(3), "012");

  EXPECT_EQ(fault.calls(), 1);
}

}  // namespace
}  // namespace halvo
