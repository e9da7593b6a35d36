#include "main/InstalledDriver.h"

#include <gtest/gtest.h>

#include "HalvoHelper/testing/FifoEnds.h"
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

  EXPECT_EQ(halvoInstalledDriverVersion(path), GetParam().expected);
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

  EXPECT_EQ(halvoInstalledDriverVersion(directory.path("Info.plist")), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentWhenADirectoryIsInPlaceOfTheFile) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeDirectory("Info.plist")), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentBehindADanglingLink) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeLink("Info.plist", directory.path("gone"))), std::nullopt);
}

std::string withFiller(std::size_t bytes) {
  return xml("<dict><key>a</key><string>" + std::string(bytes, 'x') +
             "</string><key>CFBundleVersion</key><string>1.4.2</string></dict>");
}

// A property list of exactly that many bytes.
std::string listOfSize(std::size_t bytes) { return withFiller(bytes - withFiller(0).size()); }

TEST(DriverVersionTest, IsFoundAtTheEndOfALongFile) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeFile("Info.plist", withFiller(200'000))), "1.4.2");
}

TEST(DriverVersionTest, IsFoundWhereASingleByteIsLeftForTheLastReading) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeFile("Info.plist", listOfSize(65'537))), "1.4.2");
}

TEST(DriverVersionTest, IsReadFromSixteenMebibytes) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeFile("Info.plist", listOfSize(16'777'216))), "1.4.2");
}

TEST(DriverVersionTest, IsAbsentInAFileOfOneByteMore) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeFile("Info.plist", listOfSize(16'777'217))), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentBehindAFifoThatNobodyWrites) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeFifo("Info.plist")), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentBehindAFifoThatHoldsAPropertyList) {
  const TemporaryDirectory directory;
  const std::string fifo = directory.makeFifo("Info.plist");
  const FifoWriter writer(fifo, xmlWithVersion("<string>1.4.2</string>"));

  EXPECT_EQ(halvoInstalledDriverVersion(fifo), std::nullopt);
}

TEST(DriverVersionTest, IsAbsentBehindADeviceThatNeverEnds) {
  const TemporaryDirectory directory;

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeLink("Info.plist", "/dev/zero")), std::nullopt);
}

TEST(DriverVersionTest, IsReadThroughALink) {
  const TemporaryDirectory directory;
  const std::string file = directory.makeFile("elsewhere", xmlWithVersion("<string>1.4.2</string>"));

  EXPECT_EQ(halvoInstalledDriverVersion(directory.makeLink("Info.plist", file)), "1.4.2");
}

TEST(DriverVersionTest, IsReadAnewEachTime) {
  const TemporaryDirectory directory;
  const std::string path = directory.makeFile("Info.plist", xmlWithVersion("<string>1</string>"));
  const auto before = halvoInstalledDriverVersion(path);
  directory.makeFile("Info.plist", xmlWithVersion("<string>2</string>"));

  EXPECT_EQ(before, "1");
  EXPECT_EQ(halvoInstalledDriverVersion(path), "2");
}

}  // namespace
}  // namespace halvo
