#include "platform/ProcessList.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

namespace halvo {
namespace {

class ProcessListContract : public testing::Test {
 protected:
  ProcessEntry self() const {
    const auto found = std::ranges::find(all, ::getpid(), &ProcessEntry::process);
    return found == all.end() ? ProcessEntry{} : *found;
  }

  const std::vector<ProcessEntry> all = halvoRunningProcesses().value_or(std::vector<ProcessEntry>{});
};

TEST_F(ProcessListContract, KnowsTheCallersParentAndUser) {
  EXPECT_EQ(self().parent, ::getppid());
  EXPECT_EQ(self().user, ::geteuid());
}

TEST_F(ProcessListContract, NamesTheCallersProgram) {
  const std::string program = testing::internal::GetArgvs().front();

  EXPECT_EQ(self().name.substr(0, 15), program.substr(program.rfind('/') + 1, 15));
}

TEST_F(ProcessListContract, TheCallerIsYoung) {
  EXPECT_GE(self().age, std::chrono::seconds(0));
  EXPECT_LT(self().age, std::chrono::hours(1));
}

TEST_F(ProcessListContract, ListsAProcessOnce) {
  EXPECT_EQ(std::ranges::count(all, ::getpid(), &ProcessEntry::process), 1);
}

}  // namespace
}  // namespace halvo
