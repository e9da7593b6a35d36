#include "client/Manifest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::HasSubstr;
using testing::VariantWith;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;

testing::Matcher<std::variant<std::string, UnreadableManifest>> isRefusedWith(const std::string& words) {
  return VariantWith<UnreadableManifest>(testing::Field(&UnreadableManifest::reason, HasSubstr(words)));
}

class ManifestTest : public testing::Test {
 protected:
  TemporaryDirectory directory;
};

TEST_F(ManifestTest, IsReadAsItIs) {
  const std::string text("{\"driver_version\":\"2.1\"}\r\n\0\xFF", 28);

  EXPECT_THAT(readManifest(directory.makeFile("m.json", text)), VariantWith<std::string>(text));
}

TEST_F(ManifestTest, EmptyFileIsAnEmptyManifest) {
  EXPECT_THAT(readManifest(directory.makeFile("m.json", "")), VariantWith<std::string>(""));
}

TEST_F(ManifestTest, LinkToAFileIsFollowed) {
  const std::string target = directory.makeFile("m.json", "{}");

  EXPECT_THAT(readManifest(directory.makeLink("link", target)), VariantWith<std::string>("{}"));
}

TEST_F(ManifestTest, LargestIsRead) {
  const std::string text(kMebibyte, 'x');

  EXPECT_THAT(readManifest(directory.makeFile("m.json", text)), VariantWith<std::string>(text));
}

TEST_F(ManifestTest, LargerOneIsRefused) {
  const std::string path = directory.makeSparseFile("m.json", kMebibyte + 1);

  EXPECT_THAT(readManifest(path), isRefusedWith("cannot be read. It is larger than 1 MiB"));
}

TEST_F(ManifestTest, MissingOneIsRefused) {
  EXPECT_THAT(readManifest(directory.path("m.json")), isRefusedWith("No such file or directory: check the path."));
}

TEST_F(ManifestTest, DirectoryIsRefused) {
  EXPECT_THAT(readManifest(directory.makeDirectory("m.json")), isRefusedWith("It is no regular file"));
}

TEST_F(ManifestTest, PipeIsRefusedWithoutWaitingForAWriter) {
  EXPECT_THAT(readManifest(directory.makeFifo("m.json")), isRefusedWith("It is no regular file"));
}

TEST_F(ManifestTest, NameIsShownWithoutControlCharacters) {
  EXPECT_THAT(readManifest("/no\x1Bwhere"), isRefusedWith("The manifest /no\\033where cannot be read."));
}

}  // namespace
}  // namespace halvo
