#include "client/Manifest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::VariantWith;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;

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

// A FIFO that somebody writes this text into.
class WrittenFifo {
 public:
  WrittenFifo(const std::string& path, const std::string& text)
      : writer_([path, text] { std::ofstream(path) << text; }) {}
  ~WrittenFifo() { writer_.join(); }

 private:
  std::thread writer_;
};

TEST_F(ManifestTest, AFifoIsReadToItsEnd) {
  const std::string fifo = directory.makeFifo("m.json");
  const WrittenFifo written(fifo, std::string(10'000, 'x'));

  EXPECT_THAT(readManifest(fifo), VariantWith<std::string>(std::string(10'000, 'x')));
}

TEST_F(ManifestTest, AFifoMayHoldTheLargestAndNoMore) {
  const std::string fifo = directory.makeFifo("m.json");
  {
    const WrittenFifo written(fifo, std::string(kMebibyte, 'x'));
    EXPECT_THAT(readManifest(fifo), VariantWith<std::string>(std::string(kMebibyte, 'x')));
  }
  const WrittenFifo written(fifo, std::string(kMebibyte + 1, 'x'));
  EXPECT_THAT(
      readManifest(fifo),
      VariantWith<UnreadableManifest>(testing::Field(
          &UnreadableManifest::reason,
          testing::EndsWith("/m.json cannot be read. It is larger than 1 MiB: check that it is the manifest."))));
}

// Standard input leads to this path for as long as the object lives.
class StandardInput {
 public:
  explicit StandardInput(const std::string& path) : saved_(::dup(STDIN_FILENO)) {
    const int other = ::open(path.c_str(), O_RDONLY);
    ::dup2(other, STDIN_FILENO);
    ::close(other);
  }
  ~StandardInput() {
    ::dup2(saved_, STDIN_FILENO);
    ::close(saved_);
  }

 private:
  int saved_;
};

TEST_F(ManifestTest, ADashIsStandardInputWhichStaysOpen) {
  const StandardInput input(directory.makeFile("m.json", "{}"));

  EXPECT_THAT(readManifest("-"), VariantWith<std::string>("{}"));
  EXPECT_THAT(readManifest("-"), VariantWith<std::string>(""));
}

TEST_F(ManifestTest, StandardInputThatCannotBeReadIsNamed) {
  const StandardInput input(directory.path());

  EXPECT_THAT(readManifest("-"), VariantWith<UnreadableManifest>(UnreadableManifest{
                                     "The manifest on standard input cannot be read. Is a directory: try again."}));
}

struct UnreadableRow {
  const char* name;
  std::string (*make)(const TemporaryDirectory&);
  const char* reason;
};

class UnreadableManifestTest : public ManifestTest, public testing::WithParamInterface<UnreadableRow> {};

TEST_P(UnreadableManifestTest, IsRefusedWithWhatToDo) {
  EXPECT_THAT(readManifest(GetParam().make(directory)),
              VariantWith<UnreadableManifest>(testing::Field(
                  &UnreadableManifest::reason,
                  testing::AllOf(testing::StartsWith("The manifest /"), testing::EndsWith(GetParam().reason)))));
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnreadableManifestTest,
    testing::Values(
        UnreadableRow{"Missing", [](const TemporaryDirectory& in) { return in.path("m.json"); },
                      "/m.json cannot be read. No such file or directory: check the path."},
        UnreadableRow{"BelowAFile", [](const TemporaryDirectory& in) { return in.makeFile("f") + "/m.json"; },
                      "/m.json cannot be read. Not a directory: check the path."},
        UnreadableRow{"LinkInACircle", [](const TemporaryDirectory& in) { return in.makeLink("m.json", "m.json"); },
                      "/m.json cannot be read. Too many levels of symbolic links: check the path."},
        UnreadableRow{"Directory", [](const TemporaryDirectory& in) { return in.makeDirectory("m.json"); },
                      "/m.json cannot be read. It is neither a regular file nor a FIFO: check the path."},
        UnreadableRow{"Device", [](const TemporaryDirectory& in) { return in.makeLink("m.json", "/dev/null"); },
                      "/m.json cannot be read. It is neither a regular file nor a FIFO: check the path."},
        UnreadableRow{"TooLarge",
                      [](const TemporaryDirectory& in) { return in.makeSparseFile("m.json", kMebibyte + 1); },
                      "/m.json cannot be read. It is larger than 1 MiB: check that it is the manifest."},
        UnreadableRow{"NameWithControlCharacters", [](const TemporaryDirectory& in) { return in.path("no\x1Bwhere"); },
                      "/no\\033where cannot be read. No such file or directory: check the path."}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
