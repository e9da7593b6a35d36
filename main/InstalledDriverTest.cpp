#include "main/InstalledDriver.h"

#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

std::string xml(const std::string& body) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">)" +
         body + "</plist>\n";
}

std::string xmlWithVersion(const std::string& value) {
  return xml("<dict><key>CFBundleName</key><string>Halvo</string><key>CFBundleVersion</key>" + value + "</dict>");
}

// {CFBundleVersion: "1.4.2"} in the binary form.
const std::string kBinary(
    "bplist00\xd1\x01\x02\x5f\x10\x0f"
    "CFBundleVersion"
    "\x55"
    "1.4.2"
    "\x08\x0b\x1d"
    "\x00\x00\x00\x00\x00\x00\x01\x01\x00\x00\x00\x00\x00\x00\x00\x03\x00\x00\x00\x00\x00\x00\x00\x00"
    "\x00\x00\x00\x00\x00\x00\x00\x23",
    70);

struct PlistRow {
  const char* name;
  std::string contents;
  std::optional<std::string> expected;
};

class DriverPlist : public testing::TestWithParam<PlistRow> {};

TEST_P(DriverPlist, GivesItsVersionIfItIsText) {
  const TemporaryDirectory directory;
  const std::string path = directory.makeFile("Info.plist", GetParam().contents);

  EXPECT_EQ(halvoDriverVersionIn(path), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, DriverPlist,
    testing::Values(
        PlistRow{"Xml", xmlWithVersion("<string>1.4.2</string>"), "1.4.2"}, PlistRow{"Binary", kBinary, "1.4.2"},
        PlistRow{"EmptyText", xmlWithVersion("<string></string>"), ""},
        PlistRow{"TextAsItStands", xmlWithVersion("<string> v1 &amp; \xC3\xA9 </string>"), " v1 & \xC3\xA9 "},
        PlistRow{"Integer", xmlWithVersion("<integer>142</integer>"), std::nullopt},
        PlistRow{"Real", xmlWithVersion("<real>1.4</real>"), std::nullopt},
        PlistRow{"Boolean", xmlWithVersion("<true/>"), std::nullopt},
        PlistRow{"Array", xmlWithVersion("<array><string>1.4.2</string></array>"), std::nullopt},
        PlistRow{"Data", xmlWithVersion("<data>MS40LjI=</data>"), std::nullopt},
        PlistRow{"MissingKey", xml("<dict><key>CFBundleName</key><string>1</string></dict>"), std::nullopt},
        PlistRow{"OtherCaseOfTheKey", xml("<dict><key>cfbundleversion</key><string>1</string></dict>"), std::nullopt},
        PlistRow{"NestedKey", xml("<dict><key>a</key><dict><key>CFBundleVersion</key><string>1</string></dict></dict>"),
                 std::nullopt},
        PlistRow{"EmptyDictionary", xml("<dict/>"), std::nullopt},
        PlistRow{"TopLevelArray", xml("<array><string>CFBundleVersion</string></array>"), std::nullopt},
        PlistRow{"TopLevelText", xml("<string>1.4.2</string>"), std::nullopt}, PlistRow{"EmptyFile", "", std::nullopt},
        PlistRow{"Garbage", "\xFF\x00\x01 no plist", std::nullopt},
        PlistRow{"CutXml", xmlWithVersion("<string>1.4.2</string>").substr(0, 220), std::nullopt},
        PlistRow{"CutBinary", kBinary.substr(0, 40), std::nullopt}),
    [](const auto& row) { return row.param.name; });

TEST(DriverVersionTest, IsAbsentWithoutAFile) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoDriverVersionIn(directory.path("Info.plist")), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentWhenADirectoryIsInPlaceOfTheFile) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoDriverVersionIn(directory.makeDirectory("Info.plist")), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentBehindADanglingLink) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoDriverVersionIn(directory.makeLink("Info.plist", directory.path("gone"))), std::nullopt);
}

TEST(DriverVersionTest, IsReadAnewEachTime) {
  const TemporaryDirectory directory;
  const std::string path = directory.makeFile("Info.plist", xmlWithVersion("<string>1</string>"));
  const auto before = halvoDriverVersionIn(path);
  directory.makeFile("Info.plist", xmlWithVersion("<string>2</string>"));

  EXPECT_EQ(before, "1");
  EXPECT_EQ(halvoDriverVersionIn(path), "2");
}

}  // namespace
}  // namespace halvo
