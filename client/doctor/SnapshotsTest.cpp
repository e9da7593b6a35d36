// Snapshots, from the disk to the findings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/doctor/PartsCollector.h"
#include "client/doctor/SnapshotsCollector.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kRoot = "var/db/halvo/install-rollback/";
constexpr const char* kInfo =
    R"(<plist version="1.0"><dict><key>CFBundleVersion</key><string>1.1.0</string></dict></plist>)";

class SnapshotsTest : public testing::Test {
 protected:
  void save(const std::string& name) const {
    root.makeFile(kRoot + name + "/Halvo.driver/Contents/Info.plist", kInfo);
    root.makeFile(kRoot + name + "/halvo-broker", "broker");
    root.makeFile(kRoot + name + "/com.halvo.broker.plist", "plist");
    root.makeFile(kRoot + name + "/com.halvo.daemon.plist", "plist");
  }

  Snapshots collected() const { return collectSnapshots(disk); }

  Findings findings() const {
    Examination seen = healthyMac();
    seen.snapshots = collected();
    return judge(seen);
  }

  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(SnapshotsTest, WithoutAnyThereIsNothingToFind) {
  EXPECT_EQ(collected().sight, Sight::absent);
  EXPECT_THAT(collected().newest, IsEmpty());
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SnapshotsTest, AWholeOneHasVersionAndSize) {
  save("1771000000");

  const Snapshot snapshot = collected().newest.at(0);

  EXPECT_EQ(snapshot.name, "1771000000");
  EXPECT_EQ(snapshot.driverVersion, "1.1.0");
  EXPECT_EQ(snapshot.bytes, 106);
  EXPECT_TRUE(snapshot.bytesAreAll);
  EXPECT_THAT(snapshot.missing, IsEmpty());
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SnapshotsTest, AnEmptyOneIsThatOfAFirstInstall) {
  root.makeDirectory(std::string(kRoot) + "1771000000");

  EXPECT_THAT(collected().newest.at(0).missing, testing::SizeIs(4));
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(SnapshotsTest, AMissingPartIsAFinding) {
  save("1771000000");
  std::filesystem::remove(root.path(std::string(kRoot) + "1771000000/halvo-broker"));

  EXPECT_THAT(findings(), ElementsAre(Finding{
                              "snapshot-partial", "The snapshot 1771000000 lacks halvo-broker.",
                              "These parts were not installed at that time, or there was no room to save them: what "
                              "is copied back from there is not the whole product. See that the disk has room; the "
                              "next install saves all that is there."}));
}

TEST_F(SnapshotsTest, ADriverWithoutVersionIsAFinding) {
  save("1771000000");
  root.makeFile(std::string(kRoot) + "1771000000/Halvo.driver/Contents/Info.plist", "<plist");

  EXPECT_THAT(findings(), ElementsAre(Finding{"snapshot-damaged", "The driver in the snapshot 1771000000 is damaged.",
                                              "An install was killed while it saved the parts. Copy nothing back from "
                                              "there by hand; the next install saves them anew."}));
}

TEST_F(SnapshotsTest, WhatIsNoFolderIsAFinding) {
  root.makeFile("elsewhere/Halvo.driver/Contents/Info.plist", kInfo);
  root.makeLink(std::string(kRoot) + "1771000000", root.path("elsewhere"));

  EXPECT_THAT(findings(), ElementsAre(Finding{
                              "snapshot-kind", "/var/db/halvo/install-rollback/1771000000 is a link, not a folder.",
                              "The helper makes folders there and nothing else. Look whose it is, and remove it."}));
}

TEST_F(SnapshotsTest, TheFiveNewestAreShownByNumber) {
  root.makeDirectory(std::string(kRoot) + "999");
  root.makeDirectory(std::string(kRoot) + "1000");
  root.makeDirectory(std::string(kRoot) + "1001");
  root.makeDirectory(std::string(kRoot) + "1002");
  root.makeDirectory(std::string(kRoot) + "1003");
  root.makeDirectory(std::string(kRoot) + "1004");
  root.makeDirectory(std::string(kRoot) + "zzz");

  const Snapshots snapshots = collected();

  EXPECT_THAT(snapshots.newest,
              ElementsAre(testing::Field(&Snapshot::name, "1004"), testing::Field(&Snapshot::name, "1003"),
                          testing::Field(&Snapshot::name, "1002"), testing::Field(&Snapshot::name, "1001"),
                          testing::Field(&Snapshot::name, "1000")));
  EXPECT_EQ(snapshots.others, 2U);
}

class PartsOnDisk : public SnapshotsTest {
 protected:
  Part driver() const {
    Examination seen;
    seen.parts = collectParts(disk);
    return partAt(seen, "/Library/Audio/Plug-Ins/HAL/Halvo.driver");
  }
};

TEST_F(PartsOnDisk, TheDriversVersionIsThatWhichTheHelperCompares) {
  root.makeFile("Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist", kInfo);

  EXPECT_EQ(driver().item.kind, ItemKind::folder);
  EXPECT_EQ(driver().version, "1.1.0");
}

TEST_F(PartsOnDisk, AVersionOfAnyLengthIsCut) {
  root.makeFile("Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist",
                "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>" + std::string(5000, '1') +
                    "</string></dict></plist>");

  EXPECT_EQ(driver().version, "1111111111111111111111111111111111111111...");
}

TEST_F(PartsOnDisk, AFifoForAPropertyListIsNotWaitedFor) {
  root.makeFifo("Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist");

  EXPECT_EQ(driver().versionSight, Sight::absent);
}

TEST_F(PartsOnDisk, ALinkInPlaceOfTheDriverIsNotFollowed) {
  root.makeFile("elsewhere/Contents/Info.plist", kInfo);
  root.makeLink("Library/Audio/Plug-Ins/HAL/Halvo.driver", root.path("elsewhere"));

  EXPECT_EQ(driver().item.kind, ItemKind::link);
  EXPECT_EQ(driver().version, "");
}

}  // namespace
}  // namespace halvo
