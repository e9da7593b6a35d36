#include "sim/support/CodeSignature.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

const CodeSignature kApp{"com.halvo.app", "QX4TRM2ZL9", "apple generic"};

std::optional<CodeSignature> signatureOf(const std::filesystem::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  auto signature = readCodeSignature(descriptor);
  ::close(descriptor);
  return signature;
}

class CodeSignatureTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
};

TEST_F(CodeSignatureTest, WhatWasSignedIsReadBack) {
  const auto file = directory_.write("program", "code");

  EXPECT_TRUE(signExecutable(file, kApp));

  EXPECT_EQ(signatureOf(file), kApp);
}

TEST_F(CodeSignatureTest, TextNeedsNoEscaping) {
  const CodeSignature odd{"a \"quoted\"\nname", "", "adhoc"};
  const auto file = directory_.write("program", "");

  EXPECT_TRUE(signExecutable(file, odd));

  EXPECT_EQ(signatureOf(file), odd);
}

TEST_F(CodeSignatureTest, AnUnsignedFileHasNone) {
  EXPECT_EQ(signatureOf(directory_.write("program", "no signature at the end of this file at all")), std::nullopt);
  EXPECT_EQ(signatureOf(directory_.write("empty", "")), std::nullopt);
}

TEST_F(CodeSignatureTest, ADescriptorThatIsNotAFileHasNone) {
  EXPECT_EQ(signatureOf(directory_.path()), std::nullopt);
  EXPECT_EQ(readCodeSignature(-1), std::nullopt);
}

TEST_F(CodeSignatureTest, SigningAgainReplacesTheBlock) {
  const auto file = directory_.write("program", "code");
  ASSERT_TRUE(signExecutable(file, {"com.example.a-rather-long-identifier", "OTHERTEAM1", "apple"}));
  ASSERT_TRUE(signExecutable(file, kApp));
  const auto size = std::filesystem::file_size(file);

  EXPECT_TRUE(signExecutable(file, kApp));

  EXPECT_EQ(signatureOf(file), kApp);
  EXPECT_EQ(std::filesystem::file_size(file), size);
  EXPECT_EQ(directory_.read("program").substr(0, 5), "code{");
}

TEST_F(CodeSignatureTest, CodeIsIntactUntilAByteOfItChanges) {
  const auto file = directory_.write("program", "code");
  ASSERT_TRUE(signExecutable(file, kApp));
  const UniqueDescriptor open(::open(file.c_str(), O_RDWR | O_CLOEXEC));

  EXPECT_TRUE(signedCodeIsIntact(open.get()));
  ASSERT_EQ(::pwrite(open.get(), "x", 1, 2), 1);
  EXPECT_FALSE(signedCodeIsIntact(open.get()));
  EXPECT_EQ(readCodeSignature(open.get()), kApp);
}

TEST_F(CodeSignatureTest, ALengthBeyondTheFileIsDamage) {
  EXPECT_EQ(signatureOf(directory_.write("program", "\xff\xff\xff\x7fhalvo-sim-signed")), std::nullopt);
}

TEST_F(CodeSignatureTest, ABlockWithoutATeamIsDamage) {
  using namespace std::string_literals;
  using namespace std::string_view_literals;
  const auto text = R"({"identifier":"com.halvo.app","anchor":"apple generic"})"s;
  const auto file = directory_.write("program", text + std::string("\x37\0\0\0"sv) + "halvo-sim-signed");

  EXPECT_EQ(text.size(), 0x37U);
  EXPECT_EQ(signatureOf(file), std::nullopt);
}

TEST_F(CodeSignatureTest, AFileThatIsNotThereCannotBeSigned) {
  EXPECT_FALSE(signExecutable(directory_.path() / "missing", kApp));
  EXPECT_FALSE(signExecutable(directory_.path(), kApp));
}

TEST_F(CodeSignatureTest, ReadingLeavesTheOffsetAlone) {
  const auto file = directory_.write("program", "code");
  ASSERT_TRUE(signExecutable(file, kApp));
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);

  EXPECT_EQ(readCodeSignature(descriptor), kApp);

  EXPECT_EQ(::lseek(descriptor, 0, SEEK_CUR), 0);
  ::close(descriptor);
}

TEST_F(CodeSignatureTest, ASignedProgramStillRuns) {
  const auto program = directory_.path() / "true";
  std::filesystem::copy_file("/bin/true", program);
  ASSERT_TRUE(signExecutable(program, kApp));

  const int status = std::system(program.c_str());

  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace halvo::sim
