#include "client/StandardStreams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace halvo {
namespace {

int nextDescriptor() {
  const int descriptor = ::open("/dev/null", O_RDONLY);
  ::close(descriptor);
  return descriptor;
}

bool nothingIsReadFrom(int descriptor) {
  char byte = 0;
  return ::read(descriptor, &byte, 1) == 0;
}

bool writingFails(int descriptor) { return ::write(descriptor, "x", 1) == -1 && errno == EBADF; }

struct ClosedRow {
  const char* name;
  int first;
  int last;
};

class ClosedStandardStreamsDeathTest : public testing::TestWithParam<ClosedRow> {};

TEST_P(ClosedStandardStreamsDeathTest, AreTakenAndLeadNowhere) {
  EXPECT_EXIT(
      {
        ::close(GetParam().first);
        ::close(GetParam().last);
        takeClosedStandardStreams();
        std::_Exit(nextDescriptor() > STDERR_FILENO && nothingIsReadFrom(GetParam().first) &&
                           writingFails(GetParam().last)
                       ? 7
                       : 1);
      },
      testing::ExitedWithCode(7), "");
}

INSTANTIATE_TEST_SUITE_P(Table, ClosedStandardStreamsDeathTest,
                         testing::Values(ClosedRow{"Input", 0, 0}, ClosedRow{"Output", 1, 1}, ClosedRow{"Error", 2, 2},
                                         ClosedRow{"InputAndOutput", 0, 1}, ClosedRow{"OutputAndError", 1, 2},
                                         ClosedRow{"InputAndError", 0, 2}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(StandardStreamsTest, OpenOnesStayAndNothingElseIsOpened) {
  const int before = nextDescriptor();

  takeClosedStandardStreams();

  EXPECT_EQ(nextDescriptor(), before);
}

}  // namespace
}  // namespace halvo
