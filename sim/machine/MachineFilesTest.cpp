#include "sim/machine/MachineFiles.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Files = std::vector<MachineFile>;

std::optional<CodeSignature> signatureOf(const std::filesystem::path& file) {
  const UniqueDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  return readCodeSignature(open.get());
}

TEST(MachineFilesTest, ReadsOneFileALine) {
  const auto files = parseMachineFiles("/a b/c\tbin/c\t755\tcom.x,TEAM,apple generic\n/d\tetc/d\t644\t-\n");

  EXPECT_THAT(std::get<Files>(files),
              ElementsAre(MachineFile{"/a b/c", "bin/c", 0755, CodeSignature{"com.x", "TEAM", "apple generic"}},
                          MachineFile{"/d", "etc/d", 0644, std::nullopt}));
}

TEST(MachineFilesTest, ATeamMayBeMissing) {
  const auto files = parseMachineFiles("/a\tbin/a\t755\tcom.apple.x,,apple\n");

  EXPECT_EQ(std::get<Files>(files).at(0).signature, (CodeSignature{"com.apple.x", "", "apple"}));
}

class SenselessMachineFiles : public testing::TestWithParam<std::string> {};

TEST_P(SenselessMachineFiles, AreAProblem) {
  EXPECT_TRUE(std::holds_alternative<MachineProblem>(parseMachineFiles(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Table, SenselessMachineFiles,
                         testing::Values("", "/a\tbin/a\t755\n", "/a\tbin/a\t7x5\t-\n", "/a\t/bin/a\t755\t-\n",
                                         "/a\t\t755\t-\n", "/a\tbin/a\t755\tcom.x\n", "/a\tbin/a\t755\t-\tmore\n"));

TEST(MachineFilesTest, LaysInTheFileItsModeAndItsSignature) {
  const TemporaryDirectory folder;
  const auto source = folder.write("source", "program");
  const CodeSignature signature{"com.x", "TEAM", "apple"};

  EXPECT_EQ(layIn({source, "deep/down/x", 0555, signature}, folder.path() / "root"), std::nullopt);

  const auto laid = folder.path() / "root/deep/down/x";
  EXPECT_EQ(std::filesystem::status(laid).permissions(), std::filesystem::perms(0555));
  EXPECT_EQ(signatureOf(laid), signature);
  EXPECT_EQ(signatureOf(source), std::nullopt);
}

TEST(MachineFilesTest, ReplacesWhatIsThere) {
  const TemporaryDirectory folder;
  folder.write("root/x", "old and longer");

  EXPECT_EQ(layIn({folder.write("source", "new"), "x", 0644, std::nullopt}, folder.path() / "root"), std::nullopt);

  EXPECT_EQ(folder.read("root/x"), "new");
}

TEST(MachineFilesTest, AMissingSourceIsNamed) {
  const TemporaryDirectory folder;

  const auto problem = layIn({"/nowhere/source", "x", 0644, std::nullopt}, folder.path());

  ASSERT_TRUE(problem);
  EXPECT_THAT(problem->text, HasSubstr("/nowhere/source"));
}

}  // namespace
}  // namespace halvo::sim
