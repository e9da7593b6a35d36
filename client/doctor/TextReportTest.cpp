#include "client/doctor/Reports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelperXPC/Version.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using testing::HasSubstr;

using Users = std::vector<std::int64_t>;

constexpr const char* kDate = "2026-02-11 09:30:12 +0000";

std::string screen(const Examination& seen) { return textReport(seen, judge(seen), kDate); }

TEST(TextReportTest, AHealthyMacFitsAScreen) {
  EXPECT_EQ(screen(healthyMac()),
            "Date       2026-02-11 09:30:12 +0000\n"
            "Service    answers: protocol 6, build ABI 1; halvo-app " +
                std::string(kHalvoVersion) +
                " speaks 6\n"
                "Users      501 with a graphical session\n"
                "Right      com.halvo.helper.manage-system: sound\n"
                "Tools      none of the helper's runs\n"
                "Staging    none\n"
                "\n"
                "Part                                             Version      Owner        Mode\n"
                "/Applications/Halvo.app                          1.2.0        root:wheel   755\n"
                "/Library/Audio/Plug-Ins/HAL/Halvo.driver         1.2.0        root:wheel   755\n"
                "/Library/PrivilegedHelperTools/halvo-broker      -            root:wheel   755\n"
                "/Library/LaunchDaemons/com.halvo.broker.plist    -            root:wheel   644\n"
                "/Library/LaunchAgents/com.halvo.daemon.plist     -            root:wheel   644\n"
                "/var/db/receipts/com.halvo.pkg.plist             1.2.0        root:wheel   644\n"
                "\n"
                "Snapshot                Driver     Size     Age       Parts\n"
                "1771000000              1.1.0      211 KB   2 days    complete\n"
                "\n"
                "Log                               Last refusal or failure\n"
                "/var/log/halvo-install.log        none\n"
                "/var/log/halvo-uninstall.log      none\n"
                "\n"
                "Nothing is found to be wrong.\n");
}

Tool runningFor(int seconds) { return {.process = 1, .name = "dscl", .age = Seconds(seconds)}; }

TEST(TextReportTest, AnAnswerWithoutBuildABISaysSo) {
  Examination seen = healthyMac();
  seen.service.helperVersion.reset();
  seen.service.buildABI.reset();

  EXPECT_THAT(screen(seen), HasSubstr("\nService    answers: protocol 0, build ABI unknown; halvo-app "));
}

struct LineRow {
  const char* name;
  void (*change)(Examination& seen);
  const char* line;
};

class LineOfTheReport : public testing::TestWithParam<LineRow> {};

TEST_P(LineOfTheReport, IsThere) {
  Examination seen = healthyMac();
  GetParam().change(seen);

  EXPECT_THAT(screen(seen), HasSubstr(std::string("\n") + GetParam().line + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Summary, LineOfTheReport,
    testing::Values(
        LineRow{"Unreachable", [](Examination& seen) { seen.service.state = ServiceState::unreachable; },
                "Service    cannot be reached"},
        LineRow{"Silent", [](Examination& seen) { seen.service.state = ServiceState::silent; },
                "Service    does not reply"},
        LineRow{"Strange", [](Examination& seen) { seen.service.state = ServiceState::strange; },
                "Service    replies what this program does not know"},
        LineRow{"NoUsers", [](Examination& seen) { seen.service.graphicalUsers->clear(); },
                "Users      none has a graphical session"},
        LineRow{"SeveralUsers",
                [](Examination& seen) {
                  seen.service.graphicalUsers = Users{501, 502, 503};
                },
                "Users      501, 502, 503 with a graphical session"},
        LineRow{
            "UsersThatFit",
            [](Examination& seen) { seen.service.graphicalUsers = Users{501, 502, 503, 504, 505, 506, 507, 50800}; },
            "Users      501, 502, 503, 504, 505, 506, 507, 50800 with a graphical session"},
        LineRow{
            "TooManyUsers",
            [](Examination& seen) { seen.service.graphicalUsers = Users{501, 502, 503, 504, 505, 506, 507, 508000}; },
            "Users      501, 502, 503, 504, 505, 506, 507, 50800... with a graphical session"},
        LineRow{"UnknownUsers", [](Examination& seen) { seen.service.graphicalUsers.reset(); }, "Users      unknown"},
        LineRow{"Unsound", [](Examination& seen) { seen.rightAfter = RightState::unsound; },
                "Right      com.halvo.helper.manage-system: not as the helper writes it"},
        LineRow{"NoRight", [](Examination& seen) { seen.rightAfter = RightState::missing; },
                "Right      com.halvo.helper.manage-system: missing or unreadable"},
        LineRow{"Tools",
                [](Examination& seen) {
                  seen.tools->push_back({.process = 1, .name = "installer", .age = Seconds(5)});
                  seen.tools->push_back({.process = 2, .name = "dscl", .age = Seconds(6)});
                },
                "Tools      installer for 5 s, dscl for 6 s"},
        LineRow{"ThreeTools",
                [](Examination& seen) {
                  seen.tools = std::vector<Tool>{runningFor(5), runningFor(6), runningFor(7)};
                },
                "Tools      dscl for 5 s, dscl for 6 s, dscl for 7 s"},
        LineRow{"FourTools",
                [](Examination& seen) {
                  seen.tools = std::vector<Tool>{runningFor(5), runningFor(6), runningFor(7), runningFor(8)};
                },
                "Tools      dscl for 5 s, dscl for 6 s, dscl for 7 s, ..."},
        LineRow{"UnknownTools", [](Examination& seen) { seen.tools.reset(); }, "Tools      unknown"},
        LineRow{"Staging", [](Examination& seen) { seen.staging = {.sight = Sight::present, .age = Seconds(180)}; },
                "Staging    there since 3 min"},
        LineRow{"UnreadableStaging", [](Examination& seen) { seen.staging.sight = Sight::unreadable; },
                "Staging    unreadable"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Tables, LineOfTheReport,
    testing::Values(
        LineRow{"MissingPart", [](Examination& seen) { partAt(seen, kBrokerPath).item = {}; },
                "/Library/PrivilegedHelperTools/halvo-broker      not there"},
        LineRow{"LinkForAPart", [](Examination& seen) { partAt(seen, kBrokerPath).item.kind = ItemKind::link; },
                "/Library/PrivilegedHelperTools/halvo-broker      a link"},
        LineRow{"UnreadablePart", [](Examination& seen) { partAt(seen, kBrokerPath).item.sight = Sight::unreadable; },
                "/Library/PrivilegedHelperTools/halvo-broker      unreadable"},
        LineRow{"UnreadableVersion",
                [](Examination& seen) { partAt(seen, kDriverBundlePath).versionSight = Sight::unreadable; },
                "/Library/Audio/Plug-Ins/HAL/Halvo.driver         unreadable   root:wheel   755"},
        LineRow{"OwnerAndMode",
                [](Examination& seen) {
                  partAt(seen, kBrokerPath).item = {
                      .sight = Sight::present, .kind = ItemKind::file, .owner = 501, .group = 20, .mode = 04700};
                },
                "/Library/PrivilegedHelperTools/halvo-broker      -            501:staff    4700"},
        LineRow{"VersionThatFits", [](Examination& seen) { partAt(seen, kDriverBundlePath).version = "1.2.345678"; },
                "/Library/Audio/Plug-Ins/HAL/Halvo.driver         1.2.345678   root:wheel   755"},
        LineRow{"VersionThatIsTooLong",
                [](Examination& seen) { partAt(seen, kDriverBundlePath).version = "1.2.3456789"; },
                "/Library/Audio/Plug-Ins/HAL/Halvo.driver         1.2.345678... root:wheel   755"},
        LineRow{"HostileVersion",
                [](Examination& seen) { partAt(seen, kDriverBundlePath).version = "1\n\x1B[2Jxxxxxxx"; },
                "/Library/Audio/Plug-Ins/HAL/Halvo.driver         1\\012\\033[... root:wheel   755"},
        LineRow{"EmptySnapshot",
                [](Examination& seen) {
                  seen.snapshots.newest[0].missing = {"a", "b", "c", "d"};
                  seen.snapshots.newest[0].driverSight = Sight::absent;
                },
                "1771000000              -          211 KB   2 days    none: a first install"},
        LineRow{"PartialSnapshot", [](Examination& seen) { seen.snapshots.newest[0].missing = {"a"}; },
                "1771000000              1.1.0      211 KB   2 days    3 of 4 parts"},
        LineRow{"LinkForASnapshot", [](Examination& seen) { seen.snapshots.newest[0].item.kind = ItemKind::link; },
                "1771000000              1.1.0      211 KB   2 days    no snapshot"},
        LineRow{"UnreadableDriverOfASnapshot",
                [](Examination& seen) { seen.snapshots.newest[0].driverSight = Sight::unreadable; },
                "1771000000              unreadable 211 KB   2 days    complete"},
        LineRow{"NameThatFits", [](Examination& seen) { seen.snapshots.newest[0].name = "12345678901234567890"; },
                "12345678901234567890    1.1.0      211 KB   2 days    complete"},
        LineRow{"NameThatIsTooLong", [](Examination& seen) { seen.snapshots.newest[0].name = "123456789012345678901"; },
                "12345678901234567890... 1.1.0      211 KB   2 days    complete"},
        LineRow{"HostileName", [](Examination& seen) { seen.snapshots.newest[0].name = "\x1B[2J"; },
                "\\033[2J                 1.1.0      211 KB   2 days    complete"},
        LineRow{"SecondSnapshot",
                [](Examination& seen) {
                  seen.snapshots.newest.push_back(seen.snapshots.newest[0]);
                  seen.snapshots.newest[1].name = "1770000000";
                },
                "1771000000              1.1.0      211 KB   2 days    complete\n"
                "1770000000              1.1.0      211 KB   2 days    complete"},
        LineRow{"NoSnapshots", [](Examination& seen) { seen.snapshots.newest.clear(); }, "none"},
        LineRow{"UnreadableSnapshots",
                [](Examination& seen) { seen.snapshots = {.sight = Sight::unreadable, .newest = {}}; }, "unreadable"},
        LineRow{"OtherSnapshots", [](Examination& seen) { seen.snapshots.others = 3; }, "and 3 more"},
        LineRow{"OneOtherSnapshot", [](Examination& seen) { seen.snapshots.others = 1; }, "and 1 more"},
        LineRow{"SizeAsWideAsItsColumn",
                [](Examination& seen) {
                  seen.snapshots.newest[0].bytes = 2000;
                  seen.snapshots.newest[0].bytesAreAll = false;
                },
                "1771000000              1.1.0      over 2 KB 2 days    complete"},
        LineRow{"EndlessSnapshot", [](Examination& seen) { seen.snapshots.newest[0].bytesAreAll = false; },
                "1771000000              1.1.0      over 211 KB 2 days    complete"},
        LineRow{"NoLog", [](Examination& seen) { seen.logs[0].sight = Sight::absent; },
                "/var/log/halvo-install.log        no log yet"},
        LineRow{"UnreadableLog", [](Examination& seen) { seen.logs[0].sight = Sight::unreadable; },
                "/var/log/halvo-install.log        unreadable"},
        LineRow{"Refusal",
                [](Examination& seen) {
                  seen.logs[0].refusal =
                      Refusal{.date = kDate, .age = {}, .message = "REFUSED: \x1B[2J", .overcome = true};
                },
                "/var/log/halvo-install.log        2026-02-11 09:30:12 +0000, and success since\n"
                "  REFUSED: \\033[2J"},
        LineRow{"MessageThatFits",
                [](Examination& seen) {
                  seen.logs[1].refusal = Refusal{.date = kDate, .age = {}, .message = std::string(74, 'x')};
                },
                "/var/log/halvo-uninstall.log      2026-02-11 09:30:12 +0000\n"
                "  xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
        LineRow{"MessageThatIsTooLong",
                [](Examination& seen) {
                  seen.logs[1].refusal = Refusal{.date = kDate, .age = {}, .message = std::string(75, 'x')};
                },
                "/var/log/halvo-uninstall.log      2026-02-11 09:30:12 +0000\n"
                "  xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx..."}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
