#include "client/VisibleFaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

using testing::EndsWith;
using testing::Eq;
using testing::Optional;
using testing::StartsWith;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;

struct PlaceRow {
  const char* name;
  std::string (*make)(const TemporaryDirectory&);
  const char* fault;
};

std::string nameOf(const testing::TestParamInfo<PlaceRow>& row) { return row.param.name; }

class WrongPackage : public testing::TestWithParam<PlaceRow> {
 protected:
  TemporaryDirectory directory;
};

TEST_P(WrongPackage, IsSeen) {
  EXPECT_THAT(faultOfPackage(GetParam().make(directory)), Optional(EndsWith(GetParam().fault)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, WrongPackage,
    testing::Values(
        PlaceRow{"Missing", [](const TemporaryDirectory& in) { return in.path("a.pkg"); },
                 "/a.pkg is not there: check the path."},
        PlaceRow{"BelowAFile", [](const TemporaryDirectory& in) { return in.makeFile("f") + "/a.pkg"; },
                 "/f/a.pkg is not there: check the path."},
        PlaceRow{"Link", [](const TemporaryDirectory& in) { return in.makeLink("a.pkg", in.makeFile("f")); },
                 "/a.pkg is a symbolic link: name the file itself."},
        PlaceRow{"Directory", [](const TemporaryDirectory& in) { return in.makeDirectory("a.pkg"); },
                 "/a.pkg is no regular file: check the path."},
        PlaceRow{"Fifo", [](const TemporaryDirectory& in) { return in.makeFifo("a.pkg"); },
                 "/a.pkg is no regular file: check the path."},
        PlaceRow{"TooLarge",
                 [](const TemporaryDirectory& in) { return in.makeSparseFile("a.pkg", 256 * kMebibyte + 1); },
                 "/a.pkg is larger than 256 MiB, which no package of the maker is."},
        PlaceRow{"ControlCharacters", [](const TemporaryDirectory& in) { return in.path("\n.pkg"); },
                 "/\\012.pkg is not there: check the path."}),
    nameOf);

TEST(VisibleFaultsTest, APackageThatCannotBeLookedAtIsLeftToTheHelper) {
  EXPECT_EQ(faultOfPackage("/" + std::string(5000, 'a')), std::nullopt);
}

// A link that leads to itself.
TEST(VisibleFaultsTest, AnApplicationThatCannotBeLookedAtIsLeftToTheHelper) {
  const TemporaryDirectory directory;

  EXPECT_EQ(faultOfBundle(directory.makeLink("Halvo.app", directory.path("Halvo.app"))), std::nullopt);
}

TEST(VisibleFaultsTest, AnApplicationWhoseProgramsCannotBeLookedAtIsLeftToTheHelper) {
  const TemporaryDirectory directory;
  directory.makeLink("Halvo.app/Contents", directory.path("Halvo.app/Contents"));

  EXPECT_EQ(faultOfBundle(directory.path("Halvo.app")), std::nullopt);
}

TEST(VisibleFaultsTest, ControlCharactersOfAnApplicationsPathAreShownAsCodes) {
  EXPECT_THAT(faultOfBundle("\x1B[2J/Halvo.app"), Optional(StartsWith("The path \\033[2J/Halvo.app ")));
}

TEST(VisibleFaultsTest, APackageMayBeAsLargeAsTheHelperTakesIt) {
  const TemporaryDirectory directory;

  EXPECT_EQ(faultOfPackage(directory.makeSparseFile("a.pkg", 256 * kMebibyte)), std::nullopt);
}

struct TextRow {
  const char* name;
  std::string text;
  std::optional<std::string> fault;
  bool namesVersion;
};

class ManifestText : public testing::TestWithParam<TextRow> {};

TEST_P(ManifestText, IsJudged) {
  EXPECT_EQ(faultOfManifest(GetParam().text), GetParam().fault);
  EXPECT_EQ(namesVersion(GetParam().text), GetParam().namesVersion);
}

constexpr const char* kNoObject = "The manifest is no JSON object: use the one that came with the package.";

INSTANTIATE_TEST_SUITE_P(
    Table, ManifestText,
    testing::Values(TextRow{"WithAVersion", R"({"driver_version":"0"})", std::nullopt, true},
                    TextRow{"WithoutAVersion", "{}", std::nullopt, false},
                    TextRow{"WithAVersionThatIsANumber", R"({"driver_version":9})", std::nullopt, false},
                    TextRow{"WithAVersionThatIsNull", R"({"driver_version":null})", std::nullopt, false},
                    TextRow{"WithAnotherVersion", R"({"version":"9"})", std::nullopt, false},
                    TextRow{"Empty", "", "The manifest is empty: use the one that came with the package.", false},
                    TextRow{"NoJSON", "driver_version: 9", kNoObject, false},
                    TextRow{"Array", R"(["9"])", kNoObject, false},
                    TextRow{"CutOff", R"({"driver_version":"9)", kNoObject, false}),
    [](const auto& row) { return std::string(row.param.name); });

class WrongBundle : public WrongPackage {};

TEST_P(WrongBundle, IsSeen) {
  EXPECT_THAT(faultOfBundle(GetParam().make(directory)), Optional(EndsWith(GetParam().fault)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, WrongBundle,
    testing::Values(
        PlaceRow{"Relative", [](const TemporaryDirectory&) { return std::string("Halvo.app"); },
                 "The path Halvo.app is not absolute: begin it with a slash."},
        PlaceRow{"ParentStep", [](const TemporaryDirectory& in) { return in.path("x/../Halvo.app"); },
                 "/x/../Halvo.app holds \"..\": name the folder itself."},
        PlaceRow{"OtherName", [](const TemporaryDirectory& in) { return in.makeDirectory("halvo.app"); },
                 "/halvo.app does not end with Halvo.app: name the application."},
        PlaceRow{"Top", [](const TemporaryDirectory&) { return std::string("/"); },
                 "The path / does not end with Halvo.app: name the application."},
        PlaceRow{"TopTwice", [](const TemporaryDirectory&) { return std::string("//"); },
                 "The path // does not end with Halvo.app: name the application."},
        PlaceRow{"BelowTheApplication", [](const TemporaryDirectory& in) { return in.path("Halvo.app/Contents"); },
                 "/Halvo.app/Contents does not end with Halvo.app: name the application."},
        PlaceRow{"BelowAFile", [](const TemporaryDirectory& in) { return in.makeFile("f") + "/Halvo.app"; },
                 "/f/Halvo.app leads to nothing: check it."},
        PlaceRow{"Missing", [](const TemporaryDirectory& in) { return in.path("Halvo.app"); },
                 "/Halvo.app leads to nothing: check it."},
        PlaceRow{"LinkToAnotherName",
                 [](const TemporaryDirectory& in) { return in.makeLink("Halvo.app", in.makeDirectory("other")); },
                 "/Halvo.app leads to something that is not called Halvo.app: check it."},
        PlaceRow{"WithoutPrograms", [](const TemporaryDirectory& in) { return in.makeDirectory("Halvo.app") + "/"; },
                 "/Halvo.app/ leads to a folder that holds none of the product's programs: check it."}),
    nameOf);

class RightBundle : public testing::TestWithParam<const char*> {};

TEST_P(RightBundle, HoldsOneProgramOfTheProduct) {
  const TemporaryDirectory directory;
  directory.makeDirectory("Halvo.app/Contents/MacOS");
  directory.makeFile(std::string("Halvo.app/Contents/MacOS/") + GetParam());

  EXPECT_EQ(faultOfBundle(directory.path("Halvo.app")), std::nullopt);
  EXPECT_EQ(faultOfBundle(directory.path("Halvo.app//")), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Table, RightBundle, testing::Values("halvo-helper", "halvo-app", "halvo-daemon"));

}  // namespace
}  // namespace halvo
