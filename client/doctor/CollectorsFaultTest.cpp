// What the collectors open, and what they make of what they may not read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "client/doctor/LogsCollector.h"
#include "client/doctor/PartsCollector.h"
#include "client/doctor/SnapshotsCollector.h"

namespace halvo {
namespace {

using testing::Each;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

class CollectorsFaultTest : public testing::Test {
 protected:
  TemporaryDirectory root;
  const Disk disk{root.path()};
};

TEST_F(CollectorsFaultTest, ALogThatMayNotBeReadIsUnreadable) {
  root.makeFile("var/log/halvo-install.log", "2026-02-11 09:30:12 +0000: REFUSED: X\n");
  const SystemCallFault fault("openat", EACCES);

  const LogView log = collectLogs(disk, {})[0];

  EXPECT_EQ(log.item.sight, Sight::present);
  EXPECT_EQ(log.sight, Sight::unreadable);
  EXPECT_FALSE(log.refusal.has_value());
}

TEST_F(CollectorsFaultTest, AVersionThatMayNotBeReadIsUnreadable) {
  root.makeFile("Applications/Halvo.app/Contents/Info.plist");
  const SystemCallFault fault("openat", EACCES);

  const Part application = collectParts(disk)[0];

  EXPECT_EQ(application.item.sight, Sight::present);
  EXPECT_EQ(application.versionSight, Sight::unreadable);
  EXPECT_EQ(application.version, "");
}

TEST_F(CollectorsFaultTest, WhatMayNotBeLookedAtIsUnreadable) {
  const SystemCallFault fault("lstat", EACCES, 1, INT_MAX);

  EXPECT_THAT(collectParts(disk), Each(Field(&Part::item, Field(&Item::sight, Sight::unreadable))));
  EXPECT_THAT(collectLogs(disk, {}), Each(Field(&LogView::sight, Sight::unreadable)));
}

TEST_F(CollectorsFaultTest, ASavedPartThatMayNotBeLookedAtIsNotMissing) {
  root.makeDirectory("var/db/halvo/install-rollback/1771000000");
  const SystemCallFault fault("lstat", EACCES, 2, INT_MAX);

  EXPECT_THAT(collectSnapshots(disk).newest.at(0).missing, IsEmpty());
}

// Opening a device may set it going, and a FIFO that is opened lets its writer go on.
TEST_F(CollectorsFaultTest, WhatStandsInPlaceOfAFileOrFolderIsNotOpened) {
  root.makeFifo("Applications/Halvo.app");
  root.makeFifo("Library/Audio/Plug-Ins/HAL/Halvo.driver");
  root.makeFifo("var/db/receipts/com.halvo.pkg.plist");
  root.makeFifo("var/log/halvo-install.log");
  root.makeFifo("var/log/halvo-uninstall.log");
  const NotedOpenings openings;

  static_cast<void>(collectParts(disk));
  static_cast<void>(collectLogs(disk, {}));

  EXPECT_THAT(openings.flags(), IsEmpty());
}

TEST_F(CollectorsFaultTest, NothingIsOpenedInWhatIsNoSnapshot) {
  root.makeLink("var/db/halvo/install-rollback/1771000000", root.path());
  const NotedOpenings openings;

  static_cast<void>(collectSnapshots(disk));

  EXPECT_THAT(openings.flags(), SizeIs(1)) << "the folder of the snapshots";
}

}  // namespace
}  // namespace halvo
