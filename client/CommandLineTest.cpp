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
    Requests, AcceptedCommand,
    testing::Values(AcceptedRow{"Ping", {"ping"}, {}}, AcceptedRow{"Users", {"users"}, {.verb = Verb::users}},
                    AcceptedRow{"Install",
                                {"install", "a b.pkg", "--manifest", "m.json"},
                                {.verb = Verb::install, .path = "a b.pkg", .manifestPath = "m.json"}},
                    AcceptedRow{"PrepareRemoval", {"prepare-removal"}, {.verb = Verb::prepareRemoval}},
                    AcceptedRow{"RemoveBundle",
                                {"remove-bundle", "relative/Halvo.app"},
                                {.verb = Verb::removeBundle, .path = "relative/Halvo.app"}},
                    AcceptedRow{"Finalize", {"finalize"}, {.verb = Verb::finalize}},
                    AcceptedRow{"LegacyInstall",
                                {"legacy", "install", "a.pkg", "--manifest", "m"},
                                {.verb = Verb::install, .legacy = true, .path = "a.pkg", .manifestPath = "m"}},
                    AcceptedRow{"LegacyPrepareRemoval",
                                {"legacy", "prepare-removal", "--accept-audio-interruption"},
                                {.verb = Verb::prepareRemoval, .legacy = true, .acceptAudioInterruption = true}},
                    AcceptedRow{"LegacyRemoveBundle",
                                {"legacy", "remove-bundle", "/x"},
                                {.verb = Verb::removeBundle, .legacy = true, .path = "/x"}},
                    AcceptedRow{"LegacyFinalize", {"legacy", "finalize"}, {.verb = Verb::finalize, .legacy = true}}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Options, AcceptedCommand,
    testing::Values(
        AcceptedRow{
            "InAnyOrder",
            {"install", "--accept-audio-interruption", "--manifest", "m.json", "a.pkg"},
            {.verb = Verb::install, .acceptAudioInterruption = true, .path = "a.pkg", .manifestPath = "m.json"}},
        AcceptedRow{"InstallGrant",
                    {"install", "--without-grant", "a.pkg", "--manifest", "m"},
                    {.verb = Verb::install, .withoutGrant = true, .path = "a.pkg", .manifestPath = "m"}},
        AcceptedRow{"ManifestNamedLikeAnOption",
                    {"install", "a.pkg", "--manifest", "--without-grant"},
                    {.verb = Verb::install, .path = "a.pkg", .manifestPath = "--without-grant"}},
        AcceptedRow{"PackageWithOneDash",
                    {"install", "-x.pkg", "--manifest", "m"},
                    {.verb = Verb::install, .path = "-x.pkg", .manifestPath = "m"}},
        AcceptedRow{"PrepareRemovalAudio",
                    {"prepare-removal", "--accept-audio-interruption"},
                    {.verb = Verb::prepareRemoval, .acceptAudioInterruption = true}},
        AcceptedRow{"PrepareRemovalGrant",
                    {"prepare-removal", "--without-grant"},
                    {.verb = Verb::prepareRemoval, .withoutGrant = true}},
        AcceptedRow{"RemoveBundleGrant",
                    {"remove-bundle", "/x", "--without-grant"},
                    {.verb = Verb::removeBundle, .withoutGrant = true, .path = "/x"}},
        AcceptedRow{"FinalizeGrant", {"finalize", "--without-grant"}, {.verb = Verb::finalize, .withoutGrant = true}}),
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
    Requests, RefusedCommand,
    testing::Values(RefusedRow{"None", {}, "say what to do"},
                    RefusedRow{"Unknown", {"explode"}, "'explode' is not a request"},
                    RefusedRow{"Empty", {""}, "'' is not a request"},
                    RefusedRow{"OptionFirst", {"--without-grant", "finalize"}, "'--without-grant' is not a request"},
                    RefusedRow{"LegacyAlone", {"legacy"}, "legacy needs a request"},
                    RefusedRow{"LegacyUnknown", {"legacy", "explode"}, "'explode' is not a request"},
                    RefusedRow{"LegacyTwice", {"legacy", "legacy", "finalize"}, "'legacy' is not a request"},
                    RefusedRow{"LegacyPing", {"legacy", "ping"}, "ping has no legacy form"},
                    RefusedRow{"LegacyUsers", {"legacy", "users"}, "users has no legacy form"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Operands, RefusedCommand,
    testing::Values(
        RefusedRow{"InstallAlone", {"install"}, "install needs a package"},
        RefusedRow{"InstallOfNoName", {"install", "", "--manifest", "m"}, "install needs a package"},
        RefusedRow{"InstallOfTwo", {"install", "a", "b", "--manifest", "m"}, "install does not take 'b'"},
        RefusedRow{"InstallWithoutManifest", {"install", "a.pkg"}, "install needs --manifest and a file"},
        RefusedRow{
            "InstallWithEmptyManifest", {"install", "a.pkg", "--manifest", ""}, "install needs --manifest and a file"},
        RefusedRow{"ManifestWithoutFile", {"install", "a.pkg", "--manifest"}, "--manifest needs the path of a file"},
        RefusedRow{"LegacyInstallAlone", {"legacy", "install"}, "install needs a package"},
        RefusedRow{"BundleWithoutPath", {"remove-bundle"}, "remove-bundle needs the path of the application"},
        RefusedRow{"TwoBundles", {"remove-bundle", "/a", "/b"}, "remove-bundle does not take '/b'"},
        RefusedRow{"PingWithOne", {"ping", "x"}, "ping does not take 'x'"},
        RefusedRow{"UsersWithOne", {"users", "x"}, "users does not take 'x'"},
        RefusedRow{"PrepareRemovalWithOne", {"prepare-removal", "x"}, "prepare-removal does not take 'x'"},
        RefusedRow{"FinalizeWithOne", {"finalize", "x"}, "finalize does not take 'x'"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Options, RefusedCommand,
    testing::Values(
        RefusedRow{
            "PingAudio", {"ping", "--accept-audio-interruption"}, "ping does not take '--accept-audio-interruption'"},
        RefusedRow{"PingGrant", {"ping", "--without-grant"}, "ping does not take '--without-grant'"},
        RefusedRow{"PingManifest", {"ping", "--manifest", "m"}, "ping does not take '--manifest'"},
        RefusedRow{"UsersAudio",
                   {"users", "--accept-audio-interruption"},
                   "users does not take '--accept-audio-interruption'"},
        RefusedRow{"UsersGrant", {"users", "--without-grant"}, "users does not take '--without-grant'"},
        RefusedRow{"UsersManifest", {"users", "--manifest", "m"}, "users does not take '--manifest'"},
        RefusedRow{"InstallUnknown", {"install", "--force", "a.pkg"}, "install does not take '--force'"},
        RefusedRow{"LegacyInstallGrant",
                   {"legacy", "install", "a.pkg", "--without-grant"},
                   "install does not take '--without-grant'"},
        RefusedRow{"PrepareRemovalManifest",
                   {"prepare-removal", "--manifest", "m"},
                   "prepare-removal does not take '--manifest'"},
        RefusedRow{"PrepareRemovalUnknown", {"prepare-removal", "--force"}, "prepare-removal does not take '--force'"},
        RefusedRow{"RemoveBundleAudio",
                   {"remove-bundle", "/x", "--accept-audio-interruption"},
                   "remove-bundle does not take '--accept-audio-interruption'"},
        RefusedRow{
            "RemoveBundleManifest", {"remove-bundle", "--manifest", "m"}, "remove-bundle does not take '--manifest'"},
        RefusedRow{"RemoveBundleVersion", {"remove-bundle", "--version"}, "remove-bundle does not take '--version'"},
        RefusedRow{"FinalizeAudio",
                   {"finalize", "--accept-audio-interruption"},
                   "finalize does not take '--accept-audio-interruption'"},
        RefusedRow{"FinalizeManifest", {"finalize", "--manifest", "m"}, "finalize does not take '--manifest'"},
        RefusedRow{"LegacyFinalizeGrant",
                   {"legacy", "finalize", "--without-grant"},
                   "finalize does not take '--without-grant'"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CommandLineTest, HelpIsGivenWhereverItIsAskedFor) {
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"--help"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"install", "--help"})));
}

TEST(CommandLineTest, TheVersionCanBeAskedFor) {
  EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseCommandLine({"--version"})));
}

TEST(CommandLineTest, TheHelpTellsRequestsOptionsAndExitStatuses) {
  EXPECT_EQ(helpText(), R"(usage: halvo-app REQUEST

Asks the privileged helper of the Halvo audio product for one thing and prints its reply.

  ping                                   the helper's version
  users                                  the users with a graphical login session
  install PKG --manifest FILE            install a signed system package
  prepare-removal                        remove the product's system parts
  remove-bundle PATH                     remove the application bundle
  finalize                               unregister the helper and stop it
  legacy install|prepare-removal|remove-bundle|finalize ...
                                         the same without authorization, as old applications ask; always refused

  --accept-audio-interruption            go on although audio is running (install, prepare-removal)
  --without-grant                        send an authorization that was never approved, to see it refused
  --help, --version

Requests that change the machine ask an administrator for approval first. The reply goes to standard output as it came,
everything else to standard error.

Exit status:
   0  the request succeeded
   1  the helper refused the request or could not complete it
   2  an administrator's approval is missing
   3  the helper cannot be reached, or does not take this program for the application
   4  the helper ended before it replied
   5  the installed helper is too old for this request
  64  wrong usage
  66  the manifest cannot be read
  74  the request succeeded, but its reply could not be written
 130  interrupted; what the helper has begun, it finishes
)");
}

}  // namespace
}  // namespace halvo
