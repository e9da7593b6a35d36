#include "client/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo {
namespace {

using Words = std::vector<std::string>;

struct AcceptedRow {
  const char* name;
  Words words;
  CommandLine expected;
};

class AcceptedCommand : public testing::TestWithParam<AcceptedRow> {};

TEST_P(AcceptedCommand, MeansWhatItSays) {
  const auto parsed = parseCommandLine(GetParam().words);

  ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed));
  EXPECT_EQ(std::get<CommandLine>(parsed), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, AcceptedCommand,
    testing::Values(
        AcceptedRow{"Ping", {"ping"}, {}}, AcceptedRow{"Users", {"users"}, {.verb = Verb::users}},
        AcceptedRow{"Install",
                    {"install", "a b.pkg", "--manifest", "m.json"},
                    {.verb = Verb::install, .path = "a b.pkg", .manifestPath = "m.json"}},
        AcceptedRow{
            "OptionsInAnyOrder",
            {"install", "--accept-audio-interruption", "--manifest", "m.json", "a.pkg"},
            {.verb = Verb::install, .acceptAudioInterruption = true, .path = "a.pkg", .manifestPath = "m.json"}},
        AcceptedRow{"PrepareRemoval",
                    {"prepare-removal", "--accept-audio-interruption"},
                    {.verb = Verb::prepareRemoval, .acceptAudioInterruption = true}},
        AcceptedRow{"RemoveBundle",
                    {"remove-bundle", "relative/Halvo.app"},
                    {.verb = Verb::removeBundle, .path = "relative/Halvo.app"}},
        AcceptedRow{"EmptyPath", {"finalize"}, {.verb = Verb::finalize}},
        AcceptedRow{"WithoutGrant", {"finalize", "--without-grant"}, {.verb = Verb::finalize, .withoutGrant = true}},
        AcceptedRow{
            "Legacy", {"legacy", "remove-bundle", "/x"}, {.verb = Verb::removeBundle, .legacy = true, .path = "/x"}}),
    [](const auto& row) { return std::string(row.param.name); });

struct RefusedRow {
  const char* name;
  Words words;
  const char* message;
};

class RefusedCommand : public testing::TestWithParam<RefusedRow> {};

TEST_P(RefusedCommand, SaysWhatIsWrong) {
  const auto parsed = parseCommandLine(GetParam().words);

  ASSERT_TRUE(std::holds_alternative<UsageError>(parsed));
  EXPECT_EQ(std::get<UsageError>(parsed).message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedCommand,
    testing::Values(
        RefusedRow{"Nothing", {}, "say what to do"},
        RefusedRow{"UnknownRequest", {"explode"}, "'explode' is not a request"},
        RefusedRow{"LegacyAlone", {"legacy"}, "legacy needs a request"},
        RefusedRow{"LegacyPing", {"legacy", "ping"}, "ping has no legacy form"},
        RefusedRow{"InstallAlone", {"install"}, "install needs a package"},
        RefusedRow{"InstallWithoutManifest", {"install", "a.pkg"}, "install needs --manifest and a file"},
        RefusedRow{"ManifestWithoutFile", {"install", "a.pkg", "--manifest"}, "--manifest needs the path of a file"},
        RefusedRow{"TwoPackages", {"install", "a", "b", "--manifest", "m"}, "install does not take 'b'"},
        RefusedRow{"PingWithOperand", {"ping", "x"}, "ping does not take 'x'"},
        RefusedRow{"PingWithoutGrant", {"ping", "--without-grant"}, "ping does not take '--without-grant'"},
        RefusedRow{"LegacyWithoutGrant",
                   {"legacy", "finalize", "--without-grant"},
                   "finalize does not take '--without-grant'"},
        RefusedRow{"AudioOptionElsewhere",
                   {"finalize", "--accept-audio-interruption"},
                   "finalize does not take '--accept-audio-interruption'"},
        RefusedRow{"UnknownOption", {"prepare-removal", "--force"}, "prepare-removal does not take '--force'"},
        RefusedRow{"BundleWithoutPath", {"remove-bundle"}, "remove-bundle needs the path of the application"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CommandLineTest, HelpIsGivenWhereverItIsAskedFor) {
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"--help"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"install", "--help"})));
}

TEST(CommandLineTest, TheVersionCanBeAskedFor) {
  EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseCommandLine({"--version"})));
}

TEST(CommandLineTest, TheHelpListsEveryExitStatus) {
  EXPECT_THAT(std::string(helpText()),
              testing::ContainsRegex("0  the request(.|\n)*1  the(.|\n)*2  an(.|\n)*3  the(.|\n)*4  the(.|\n)*5  the"
                                     "(.|\n)*64  wrong(.|\n)*66  the"));
}

}  // namespace
}  // namespace halvo
