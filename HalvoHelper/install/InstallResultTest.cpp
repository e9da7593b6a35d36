#include "HalvoHelper/install/InstallResult.h"

#include <gtest/gtest.h>

#include <ostream>

namespace halvo {
namespace {

struct ReplyRow {
  InstallResult result;
  const char* reply;
};
void PrintTo(const ReplyRow& row, std::ostream* out) { *out << row.reply; }

class InstallReplyTable : public testing::TestWithParam<ReplyRow> {};

TEST_P(InstallReplyTable, IsExactlyThisText) { EXPECT_EQ(halvoInstallResultJSON(GetParam().result), GetParam().reply); }

INSTANTIATE_TEST_SUITE_P(
    Outcomes, InstallReplyTable,
    testing::Values(ReplyRow{InstallDowngrade{"2.1.0", "2.0.9"},
                             R"({"code":"downgrade","installed":"2.1.0","incoming":"2.0.9"})"},
                    ReplyRow{InstallDowngrade{"", "0"}, R"({"code":"downgrade","installed":"","incoming":"0"})"},
                    ReplyRow{InstallOk{{"driver", "broker", "daemon_agent"}},
                             R"({"code":"ok","changed":["driver","broker","daemon_agent"]})"},
                    ReplyRow{InstallOk{{"driver"}}, R"({"code":"ok","changed":["driver"]})"},
                    ReplyRow{InstallOk{}, R"({"code":"ok","changed":[]})"},
                    ReplyRow{InstallOk{{"", ""}}, R"({"code":"ok","changed":["",""]})"},
                    ReplyRow{InstallFailed{"/var/log/halvo-install.log"},
                             R"({"code":"install_failed","log_path":"/var/log/halvo-install.log"})"},
                    ReplyRow{InstallRolledBack{"/var/log/halvo-install.log"},
                             R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})"},
                    ReplyRow{InstallAudioActive{}, R"({"code":"audio_active"})"}));

INSTANTIATE_TEST_SUITE_P(Refusals, InstallReplyTable,
                         testing::Values(ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::unreadable},
                                                  R"({"code":"untrusted_package","reason":"unreadable"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::unsigned_},
                                                  R"({"code":"untrusted_package","reason":"unsigned"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::notNotarized},
                                                  R"({"code":"untrusted_package","reason":"not_notarized"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::notDeveloperID},
                                                  R"({"code":"untrusted_package","reason":"not_developer_id"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam},
                                                  R"({"code":"untrusted_package","reason":"wrong_team"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::chainTruncated},
                                                  R"({"code":"untrusted_package","reason":"chain_truncated"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::unknownAuthority},
                                                  R"({"code":"untrusted_package","reason":"unknown_authority"})"},
                                         ReplyRow{InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed},
                                                  R"({"code":"untrusted_package","reason":"staging_failed"})"}));

INSTANTIATE_TEST_SUITE_P(
    ValuesAreNotEscaped, InstallReplyTable,
    testing::Values(ReplyRow{InstallDowngrade{"2\\", "1\",\"code\":\"ok"},
                             R"({"code":"downgrade","installed":"2\","incoming":"1","code":"ok"})"},
                    ReplyRow{InstallRolledBack{"/a\nb\"c"}, "{\"code\":\"rolled_back\",\"log_path\":\"/a\nb\"c\"}"}));

TEST(InstallResultTest, EqualityLooksAtOutcomeAndPayload) {
  EXPECT_EQ(InstallResult(InstallDowngrade{"2", "1"}), InstallResult(InstallDowngrade{"2", "1"}));
  EXPECT_NE(InstallResult(InstallDowngrade{"2", "1"}), InstallResult(InstallDowngrade{"1", "2"}));
  EXPECT_NE(InstallResult(InstallOk{{"a", "b"}}), InstallResult(InstallOk{{"b", "a"}}));
  EXPECT_EQ(InstallResult(InstallFailed{"/log"}), InstallResult(InstallFailed{"/log"}));
  EXPECT_NE(InstallResult(InstallFailed{"/log"}), InstallResult(InstallFailed{"/other"}));
  EXPECT_NE(InstallResult(InstallFailed{"/log"}), InstallResult(InstallRolledBack{"/log"}));
  EXPECT_NE(InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam}),
            InstallResult(InstallUntrustedPackage{HalvoPkgDistrust::unsigned_}));
}

}  // namespace
}  // namespace halvo
