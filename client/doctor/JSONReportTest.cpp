#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelperXPC/Version.h"
#include "client/doctor/Reports.h"
#include "client/doctor/testing/HealthyMac.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

using testing::HasSubstr;
using testing::Not;

using Users = std::vector<std::int64_t>;

constexpr const char* kDate = "2026-02-11 09:30:12 +0000";

std::string json(const Examination& seen) { return jsonReport(seen, judge(seen), kDate, 1); }

struct MemberRow {
  const char* name;
  void (*change)(Examination& seen);
  const char* member;
};

TEST(JSONReportTest, AHealthyMacIsOneObjectOnOneLine) {
  EXPECT_EQ(jsonReport(healthyMac(), {}, kDate, 0),
            R"({"schema":1,"date":"2026-02-11 09:30:12 +0000","status":0,"program_version":")" +
                std::string(kHalvoVersion) +
                R"(","program_protocol":6,)"
                R"("service":{"state":"answers","explanation":"","helper_version":6,"build_abi":1,)"
                R"("graphical_users":[501]},"right":{"before":"sound","after":"sound"},"tools":[],)"
                R"("staging":{"sight":"absent","age_seconds":null},"parts":[)"
                R"({"path":"/Applications/Halvo.app","sight":"present","kind":"folder","version":"1.2.0","owner":0,)"
                R"("group":0,"mode":"755"},)"
                R"({"path":"/Library/Audio/Plug-Ins/HAL/Halvo.driver","sight":"present","kind":"folder",)"
                R"("version":"1.2.0","owner":0,"group":0,"mode":"755"},)"
                R"({"path":"/Library/PrivilegedHelperTools/halvo-broker","sight":"present","kind":"file",)"
                R"("version":null,"owner":0,"group":0,"mode":"755"},)"
                R"({"path":"/Library/LaunchDaemons/com.halvo.broker.plist","sight":"present","kind":"file",)"
                R"("version":null,"owner":0,"group":0,"mode":"644"},)"
                R"({"path":"/Library/LaunchAgents/com.halvo.daemon.plist","sight":"present","kind":"file",)"
                R"("version":null,"owner":0,"group":0,"mode":"644"},)"
                R"({"path":"/var/db/receipts/com.halvo.pkg.plist","sight":"present","kind":"file",)"
                R"("version":"1.2.0","owner":0,"group":0,"mode":"644"}],)"
                R"("snapshots":{"sight":"present","newest":[{"name":"1771000000","kind":"folder",)"
                R"("driver_version":"1.1.0","bytes":211000,"bytes_are_all":true,"age_seconds":172800,)"
                R"("complete":true,"missing":[]}],"others":0},)"
                R"("logs":[{"path":"/var/log/halvo-install.log","sight":"present","last_refusal":null},)"
                R"({"path":"/var/log/halvo-uninstall.log","sight":"present","last_refusal":null}],)"
                R"("unreadable":[],"findings":[]})"
                "\n");
}

class MemberOfTheJSONReport : public testing::TestWithParam<MemberRow> {};

TEST_P(MemberOfTheJSONReport, SaysWhatWasSeen) {
  Examination seen = healthyMac();
  GetParam().change(seen);

  EXPECT_THAT(json(seen), HasSubstr(GetParam().member));
}

INSTANTIATE_TEST_SUITE_P(
    Words, MemberOfTheJSONReport,
    testing::Values(
        MemberRow{"Unreachable", [](Examination& seen) { seen.service.state = ServiceState::unreachable; },
                  R"("service":{"state":"unreachable")"},
        MemberRow{"Silent", [](Examination& seen) { seen.service.state = ServiceState::silent; },
                  R"("service":{"state":"silent")"},
        MemberRow{"Strange", [](Examination& seen) { seen.service.state = ServiceState::strange; },
                  R"("service":{"state":"strange")"},
        MemberRow{"Explanation",
                  [](Examination& seen) { seen.service = {.state = ServiceState::strange, .explanation = "hello"}; },
                  R"("service":{"state":"strange","explanation":"hello","helper_version":null)"},
        MemberRow{"SeveralUsers",
                  [](Examination& seen) {
                    seen.service.graphicalUsers = Users{501, 502};
                  },
                  R"("graphical_users":[501,502])"},
        MemberRow{"NoUsers", [](Examination& seen) { seen.service.graphicalUsers->clear(); },
                  R"("graphical_users":[])"},
        MemberRow{"RightMendedByTheHelper", [](Examination& seen) { seen.rightBefore = RightState::unsound; },
                  R"("right":{"before":"unsound","after":"sound"})"},
        MemberRow{"NoRight", [](Examination& seen) { seen.rightAfter = RightState::missing; },
                  R"("right":{"before":"sound","after":"missing"})"},
        MemberRow{"UnsoundRight", [](Examination& seen) { seen.rightAfter = RightState::unsound; },
                  R"("right":{"before":"sound","after":"unsound"})"},
        MemberRow{"OwnerAndMode",
                  [](Examination& seen) {
                    partAt(seen, kBrokerPath).item = {
                        .sight = Sight::present, .kind = ItemKind::file, .owner = 501, .group = 20, .mode = 04700};
                  },
                  R"("kind":"file","version":null,"owner":501,"group":20,"mode":"4700"})"},
        MemberRow{"UnreadableVersion",
                  [](Examination& seen) { partAt(seen, kDriverBundlePath).versionSight = Sight::unreadable; },
                  R"(Halvo.driver","sight":"present","kind":"folder","version":null,"owner":0)"},
        MemberRow{
            "UnreadablePart", [](Examination& seen) { partAt(seen, kBrokerPath).item.sight = Sight::unreadable; },
            R"(halvo-broker","sight":"unreadable","kind":null,"version":null,"owner":null,"group":null,"mode":null})"},
        MemberRow{
            "MissingPart", [](Examination& seen) { partAt(seen, kBrokerPath).item.sight = Sight::absent; },
            R"(halvo-broker","sight":"absent","kind":null,"version":null,"owner":null,"group":null,"mode":null})"},
        MemberRow{"LinkForAPart", [](Examination& seen) { partAt(seen, kBrokerPath).item.kind = ItemKind::link; },
                  R"(halvo-broker","sight":"present","kind":"link")"},
        MemberRow{"FifoForAPart", [](Examination& seen) { partAt(seen, kBrokerPath).item.kind = ItemKind::other; },
                  R"(halvo-broker","sight":"present","kind":"other")"},
        MemberRow{"UnknownNumbers",
                  [](Examination& seen) {
                    seen.service.helperVersion.reset();
                    seen.service.buildABI.reset();
                    seen.service.graphicalUsers.reset();
                  },
                  R"("helper_version":null,"build_abi":null,"graphical_users":null})"},
        MemberRow{"UnreadableStaging", [](Examination& seen) { seen.staging.sight = Sight::unreadable; },
                  R"("staging":{"sight":"unreadable","age_seconds":null})"},
        MemberRow{"PartialSnapshot",
                  [](Examination& seen) {
                    seen.snapshots.newest[0].missing = {"Halvo.driver", "halvo-broker"};
                  },
                  R"("complete":false,"missing":["Halvo.driver","halvo-broker"]}],"others":0})"},
        MemberRow{"LinkForASnapshot", [](Examination& seen) { seen.snapshots.newest[0].item.kind = ItemKind::link; },
                  R"("age_seconds":172800,"complete":false,"missing":[])"},
        MemberRow{"DamagedSnapshot", [](Examination& seen) { seen.snapshots.newest[0].driverSight = Sight::absent; },
                  R"("driver_version":null,"bytes":211000)"},
        MemberRow{"EndlessSnapshot", [](Examination& seen) { seen.snapshots.newest[0].bytesAreAll = false; },
                  R"("bytes":211000,"bytes_are_all":false)"},
        MemberRow{"SnapshotOfTheFuture", [](Examination& seen) { seen.snapshots.newest[0].item.age = Seconds(-3); },
                  R"("age_seconds":-3,"complete":true)"},
        MemberRow{"SeveralSnapshots",
                  [](Examination& seen) {
                    seen.snapshots.newest.push_back(seen.snapshots.newest[0]);
                    seen.snapshots.newest[1].name = "1770000000";
                    seen.snapshots.others = 3;
                  },
                  R"("missing":[]},{"name":"1770000000","kind":"folder","driver_version":"1.1.0","bytes":211000,)"
                  R"("bytes_are_all":true,"age_seconds":172800,"complete":true,"missing":[]}],"others":3})"},
        MemberRow{"NoSnapshots", [](Examination& seen) { seen.snapshots = {}; },
                  R"("snapshots":{"sight":"absent","newest":[],"others":0})"},
        MemberRow{"NoLog", [](Examination& seen) { seen.logs[0].sight = Sight::absent; },
                  R"({"path":"/var/log/halvo-install.log","sight":"absent","last_refusal":null})"},
        MemberRow{"OvercomeRefusal",
                  [](Examination& seen) {
                    seen.logs[0].refusal = Refusal{.date = kDate, .age = {}, .message = "REFUSED", .overcome = true};
                  },
                  R"("last_refusal":{"date":"2026-02-11 09:30:12 +0000","message":"REFUSED","overcome":true})"},
        MemberRow{"UnreadablePlaces",
                  [](Examination& seen) {
                    seen.snapshots.sight = Sight::unreadable;
                    seen.logs[0].sight = Sight::unreadable;
                  },
                  R"("unreadable":["/var/db/halvo/install-rollback","/var/log/halvo-install.log"])"},
        MemberRow{"UnknownTools", [](Examination& seen) { seen.tools.reset(); }, R"("tools":null)"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(JSONReportTest, AFindingHasCodeTextAndHint) {
  Examination seen = healthyMac();
  seen.staging = {.sight = Sight::present, .kind = ItemKind::folder, .age = Seconds(7)};

  EXPECT_THAT(json(seen), HasSubstr(R"("staging":{"sight":"present","age_seconds":7})"));
  EXPECT_THAT(json(seen),
              HasSubstr(R"("findings":[{"code":"staging-left",)"
                        R"("text":"/var/db/halvo/install-staging is left of an install.","hint":"Unless )"));
}

TEST(JSONReportTest, SeveralFindingsAreInTheirOrder) {
  EXPECT_THAT(jsonReport(healthyMac(), {{"b", "first", "x"}, {"a", "second", "y"}}, kDate, 1),
              HasSubstr(R"("findings":[{"code":"b","text":"first","hint":"x"},)"
                        R"({"code":"a","text":"second","hint":"y"}]})"));
}

TEST(JSONReportTest, TheStatusIsThatOfTheProcess) {
  EXPECT_THAT(jsonReport(healthyMac(), {}, kDate, 4), HasSubstr(R"("status":4,)"));
}

TEST(JSONReportTest, HostileTextsStayTexts) {
  Examination seen = healthyMac();
  seen.snapshots.newest[0].name = "\",\"findings\":[],\"x\":\"\xFF\n";
  seen.logs[0].refusal = Refusal{.date = "d", .age = {}, .message = "\"}"};
  seen.service.graphicalUsers.reset();

  EXPECT_TRUE(halvoReadJSONObject(json(seen)).has_value());
  EXPECT_THAT(json(seen), HasSubstr(R"("name":"\",\"findings\":[],\"x\":\")"));
  EXPECT_THAT(json(seen), HasSubstr(R"("last_refusal":{"date":"d","message":"\"}","overcome":false})"));
  EXPECT_THAT(json(seen), Not(HasSubstr("\xFF")));
}

TEST(JSONReportTest, AToolHasNumberNameAndAge) {
  Examination seen = healthyMac();
  seen.tools->push_back({.process = 77, .name = "dscl", .age = Seconds(5)});

  EXPECT_THAT(json(seen), HasSubstr(R"("tools":[{"process":77,"name":"dscl","age_seconds":5}])"));
}

}  // namespace
}  // namespace halvo
