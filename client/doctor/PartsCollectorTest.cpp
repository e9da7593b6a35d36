#include "client/doctor/PartsCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

constexpr const char* kDriver = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";
constexpr const char* kDriverList = "Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist";

// Every kind of version, each with a value of its own.
constexpr const char* kVersions =
    "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>1.2</string>"
    "<key>CFBundleVersion</key><string>1.2.0</string><key>PackageVersion</key><string>1.2.0.7</string></dict></plist>";

std::string driverListWith(const std::string& version, const std::string& behind = "") {
  return "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>" + version + "</string></dict>" + behind +
         "</plist>";
}

class PartsCollectorTest : public testing::Test {
 protected:
  Part partAt(std::string_view path) const {
    Examination seen;
    seen.parts = collectParts(disk);
    return halvo::partAt(seen, path);
  }

  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(PartsCollectorTest, TheApplicationStandsBeforeThePartsAndTheRecordBehindThem) {
  const auto isAt = [](const char* path) {
    return testing::Field(&Part::rule, testing::Field(&PartRule::path, testing::StrEq(path)));
  };

  EXPECT_THAT(collectParts(disk),
              testing::ElementsAre(isAt("/Applications/Halvo.app"), isAt("/Library/Audio/Plug-Ins/HAL/Halvo.driver"),
                                   isAt("/Library/PrivilegedHelperTools/halvo-broker"),
                                   isAt("/Library/LaunchDaemons/com.halvo.broker.plist"),
                                   isAt("/Library/LaunchAgents/com.halvo.daemon.plist"),
                                   isAt("/var/db/receipts/com.halvo.pkg.plist")));
}

struct RuleRow {
  const char* name;
  const char* path;
  ItemKind kind;
  unsigned mode;
  bool ownedByRoot;
};

class InstalledPart : public PartsCollectorTest, public testing::WithParamInterface<RuleRow> {};

TEST_P(InstalledPart, IsToBeAsThePackageBringsIt) {
  const PartRule rule = partAt(GetParam().path).rule;

  EXPECT_EQ(rule.kind, GetParam().kind);
  EXPECT_EQ(rule.mode, GetParam().mode);
  EXPECT_EQ(rule.ownedByRoot, GetParam().ownedByRoot);
}

INSTANTIATE_TEST_SUITE_P(
    Table, InstalledPart,
    testing::Values(RuleRow{"Application", "/Applications/Halvo.app", ItemKind::folder, 0755, false},
                    RuleRow{"Driver", kDriver, ItemKind::folder, 0755, true},
                    RuleRow{"Broker", "/Library/PrivilegedHelperTools/halvo-broker", ItemKind::file, 0755, true},
                    RuleRow{"BrokerList", "/Library/LaunchDaemons/com.halvo.broker.plist", ItemKind::file, 0644, true},
                    RuleRow{"DaemonList", "/Library/LaunchAgents/com.halvo.daemon.plist", ItemKind::file, 0644, true},
                    RuleRow{"Record", "/var/db/receipts/com.halvo.pkg.plist", ItemKind::file, 0644, false}),
    [](const auto& row) { return std::string(row.param.name); });

struct VersionRow {
  const char* name;
  const char* path;
  const char* list;
  const char* version;
};

class VersionedPart : public PartsCollectorTest, public testing::WithParamInterface<VersionRow> {};

TEST_P(VersionedPart, HasTheVersionOfItsKind) {
  root.makeFile(GetParam().list, kVersions);

  const Part part = partAt(GetParam().path);

  EXPECT_EQ(part.item.sight, Sight::present);
  EXPECT_EQ(part.versionSight, Sight::present);
  EXPECT_EQ(part.version, GetParam().version);
}

INSTANTIATE_TEST_SUITE_P(Table, VersionedPart,
                         testing::Values(VersionRow{"Application", "/Applications/Halvo.app",
                                                    "Applications/Halvo.app/Contents/Info.plist", "1.2"},
                                         VersionRow{"Driver", kDriver, kDriverList, "1.2.0"},
                                         VersionRow{"Record", "/var/db/receipts/com.halvo.pkg.plist",
                                                    "var/db/receipts/com.halvo.pkg.plist", "1.2.0.7"}),
                         [](const auto& row) { return std::string(row.param.name); });

class PartWithoutVersion : public PartsCollectorTest, public testing::WithParamInterface<VersionRow> {};

TEST_P(PartWithoutVersion, HasNoneWhateverItHolds) {
  root.makeFile(GetParam().list, kVersions);

  const Part part = partAt(GetParam().path);

  EXPECT_EQ(part.item.sight, Sight::present);
  EXPECT_EQ(part.versionSight, Sight::absent);
  EXPECT_EQ(part.version, GetParam().version);
}

INSTANTIATE_TEST_SUITE_P(Table, PartWithoutVersion,
                         testing::Values(VersionRow{"Broker", "/Library/PrivilegedHelperTools/halvo-broker",
                                                    "Library/PrivilegedHelperTools/halvo-broker", ""},
                                         VersionRow{"BrokerList", "/Library/LaunchDaemons/com.halvo.broker.plist",
                                                    "Library/LaunchDaemons/com.halvo.broker.plist", ""},
                                         VersionRow{"DaemonList", "/Library/LaunchAgents/com.halvo.daemon.plist",
                                                    "Library/LaunchAgents/com.halvo.daemon.plist", ""}),
                         [](const auto& row) { return std::string(row.param.name); });

struct ListRow {
  const char* name;
  const char* list;
};

class UnusableList : public PartsCollectorTest, public testing::WithParamInterface<ListRow> {};

TEST_P(UnusableList, NamesNoVersion) {
  root.makeFile(kDriverList, GetParam().list);

  EXPECT_EQ(partAt(kDriver).versionSight, Sight::absent);
  EXPECT_EQ(partAt(kDriver).version, "");
}

INSTANTIATE_TEST_SUITE_P(Table, UnusableList,
                         testing::Values(ListRow{"Empty", ""}, ListRow{"Damaged", "<plist"},
                                         ListRow{"OtherKey",
                                                 "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key>"
                                                 "<string>1.2</string></dict></plist>"},
                                         ListRow{"NoText",
                                                 "<plist version=\"1.0\"><dict><key>CFBundleVersion</key>"
                                                 "<integer>120</integer></dict></plist>"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PartsCollectorTest, WhatIsNotThereHasNoVersion) {
  EXPECT_EQ(partAt(kDriver).item.sight, Sight::absent);
  EXPECT_EQ(partAt(kDriver).versionSight, Sight::absent);
}

TEST_F(PartsCollectorTest, ABundleWithoutPropertyListHasNoVersion) {
  root.makeDirectory("Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents");

  EXPECT_EQ(partAt(kDriver).item.sight, Sight::present);
  EXPECT_EQ(partAt(kDriver).versionSight, Sight::absent);
}

TEST_F(PartsCollectorTest, OfALongVersionFortyBytesAreShown) {
  root.makeFile(kDriverList, driverListWith(std::string(40, '1')));
  EXPECT_EQ(partAt(kDriver).version, "1111111111111111111111111111111111111111");

  root.makeFile(kDriverList, driverListWith(std::string(41, '1')));
  EXPECT_EQ(partAt(kDriver).version, "1111111111111111111111111111111111111111...");
}

// Whoever can write into a bundle decides how long its list is.
TEST_F(PartsCollectorTest, APropertyListOfMoreThanAMebibyteIsNotRead) {
  const std::size_t room = 1'048'576 - driverListWith("1.2.0").size();

  root.makeFile(kDriverList, driverListWith("1.2.0", std::string(room, ' ')));
  EXPECT_EQ(partAt(kDriver).version, "1.2.0");

  root.makeFile(kDriverList, driverListWith("1.2.0", std::string(room + 1, ' ')));
  EXPECT_EQ(partAt(kDriver).versionSight, Sight::absent);
}

TEST_F(PartsCollectorTest, AFifoForAPropertyListIsNotWaitedFor) {
  root.makeFifo(kDriverList);

  EXPECT_EQ(partAt(kDriver).versionSight, Sight::absent);
}

TEST_F(PartsCollectorTest, ALinkInPlaceOfTheDriverIsNotFollowed) {
  root.makeFile("elsewhere/Contents/Info.plist", kVersions);
  root.makeLink("Library/Audio/Plug-Ins/HAL/Halvo.driver", root.path("elsewhere"));

  EXPECT_EQ(partAt(kDriver).item.kind, ItemKind::link);
  EXPECT_EQ(partAt(kDriver).version, "");
}

TEST_F(PartsCollectorTest, ASavedDriverHasTheVersionThatTheHelperCompares) {
  root.makeFile("saved/Halvo.driver/Contents/Info.plist", kVersions);

  EXPECT_EQ(readDriverVersion(disk, "/saved/Halvo.driver").text, "1.2.0");
}

}  // namespace
}  // namespace halvo
