// Snapshots, from the disk to the findings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
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

  void makeNames(int count) const {
    for (int i = 0; i < count; ++i) root.makeFile(kRoot + std::to_string(i));
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

TEST_F(SnapshotsTest, WhatIsNoFolderHoldsNothing) {
  root.makeFile(std::string(kRoot) + "1771000000", "123456");

  const Snapshot snapshot = collected().newest.at(0);

  EXPECT_EQ(snapshot.item.kind, ItemKind::file);
  EXPECT_EQ(snapshot.bytes, 0);
  EXPECT_THAT(snapshot.missing, IsEmpty());
}

TEST_F(SnapshotsTest, OneThatIsTooDeepToCountSaysSo) {
  root.makeFile(std::string(kRoot) + "1771000000/1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/file");

  EXPECT_FALSE(collected().newest.at(0).bytesAreAll);
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

TEST_F(SnapshotsTest, NamesThatAreNoNumbersStandBehindThoseThatAre) {
  root.makeDirectory(std::string(kRoot) + "a");
  root.makeDirectory(std::string(kRoot) + "b");
  root.makeDirectory(std::string(kRoot) + "1");

  EXPECT_THAT(collected().newest,
              ElementsAre(testing::Field(&Snapshot::name, "1"), testing::Field(&Snapshot::name, "b"),
                          testing::Field(&Snapshot::name, "a")));
}

TEST_F(SnapshotsTest, OfEndlesslyManyTenThousandAreCounted) {
  makeNames(10'001);

  EXPECT_EQ(collected().others, 9'995U);
}

}  // namespace
}  // namespace halvo
