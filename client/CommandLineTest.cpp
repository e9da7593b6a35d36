#include "client/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

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
                    AcceptedRow{"Doctor", {"doctor"}, {.verb = Verb::doctor}},
                    AcceptedRow{"DoctorForPrograms", {"doctor", "--json"}, {.verb = Verb::doctor, .json = true}},
                    AcceptedRow{"Install",
                                {"install", "a b.pkg", "--manifest", "m.json"},
                                {.verb = Verb::install, .path = "a b.pkg", .manifestPath = "m.json"}},
                    AcceptedRow{"PrepareRemoval", {"prepare-removal"}, {.verb = Verb::prepareRemoval}},
                    AcceptedRow{"RemoveBundle",
                                {"remove-bundle", "relative/Halvo.app"},
                                {.verb = Verb::removeBundle, .path = "relative/Halvo.app"}},
                    AcceptedRow{"Finalize", {"finalize"}, {.verb = Verb::finalize}},
                    AcceptedRow{"Uninstall", {"uninstall"}, {.verb = Verb::uninstall}},
                    AcceptedRow{
                        "UninstallOfAPath",
                        {"uninstall", "/x", "--accept-audio-interruption", "--without-grant"},
                        {.verb = Verb::uninstall, .withoutGrant = true, .acceptAudioInterruption = true, .path = "/x"}},
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
        AcceptedRow{"BeforeTheRequest",
                    {"--manifest", "m", "--without-grant", "install", "a.pkg"},
                    {.verb = Verb::install, .withoutGrant = true, .path = "a.pkg", .manifestPath = "m"}},
        AcceptedRow{"BetweenLegacyAndItsRequest",
                    {"legacy", "--accept-audio-interruption", "prepare-removal"},
                    {.verb = Verb::prepareRemoval, .legacy = true, .acceptAudioInterruption = true}},
        AcceptedRow{"ValueBehindAnEqualsSign",
                    {"install", "--manifest=a=b.json", "a.pkg"},
                    {.verb = Verb::install, .path = "a.pkg", .manifestPath = "a=b.json"}},
        AcceptedRow{"Shortened",
                    {"prepare-removal", "--accept"},
                    {.verb = Verb::prepareRemoval, .acceptAudioInterruption = true}},
        AcceptedRow{"TheLastOfTwoCounts",
                    {"install", "a.pkg", "--manifest", "m", "--manifest", "n"},
                    {.verb = Verb::install, .path = "a.pkg", .manifestPath = "n"}},
        AcceptedRow{"ManifestFromStandardInput",
                    {"install", "a.pkg", "--manifest", "-"},
                    {.verb = Verb::install, .path = "a.pkg", .manifestPath = "-"}},
        AcceptedRow{"PackageNamedLikeAnOption",
                    {"install", "--manifest", "m", "--", "--help"},
                    {.verb = Verb::install, .path = "--help", .manifestPath = "m"}},
        AcceptedRow{"PackageCalledADash",
                    {"install", "-", "--manifest", "m"},
                    {.verb = Verb::install, .path = "-", .manifestPath = "m"}},
        AcceptedRow{"ASecondOfTime", {"ping", "--timeout", "1"}, {.timeout = std::chrono::seconds(1)}},
        AcceptedRow{
            "ADayOfTime", {"--timeout=86400", "users"}, {.verb = Verb::users, .timeout = std::chrono::seconds(86400)}},
        AcceptedRow{"PrepareRemovalAudio",
                    {"prepare-removal", "--accept-audio-interruption"},
                    {.verb = Verb::prepareRemoval, .acceptAudioInterruption = true}},
        AcceptedRow{"PrepareRemovalGrant",
                    {"prepare-removal", "--without-grant"},
                    {.verb = Verb::prepareRemoval, .withoutGrant = true}},
        AcceptedRow{"RemoveBundleGrant",
                    {"remove-bundle", "/x", "--without-grant"},
                    {.verb = Verb::removeBundle, .withoutGrant = true, .path = "/x"}},
        AcceptedRow{"InstallUnchecked",
                    {"install", "a.pkg", "--manifest", "m", "--without-checks"},
                    {.verb = Verb::install, .withoutChecks = true, .path = "a.pkg", .manifestPath = "m"}},
        AcceptedRow{
            "UninstallUnchecked", {"uninstall", "--without-checks"}, {.verb = Verb::uninstall, .withoutChecks = true}},
        AcceptedRow{"RemoveBundleUnchecked",
                    {"remove-bundle", "/x", "--without-checks"},
                    {.verb = Verb::removeBundle, .withoutChecks = true, .path = "/x"}},
        AcceptedRow{"FinalizeGrant", {"finalize", "--without-grant"}, {.verb = Verb::finalize, .withoutGrant = true}}),
    [](const auto& row) { return std::string(row.param.name); });

struct RegistrationRow {
  const char* name;
  Words words;
  RegistrationCommand expected;
};

class RegistrationRequest : public testing::TestWithParam<RegistrationRow> {};

TEST_P(RegistrationRequest, AsksTheSystem) {
  const auto parsed = parseCommandLine(GetParam().words);

  ASSERT_TRUE(std::holds_alternative<RegistrationCommand>(parsed));
  EXPECT_EQ(std::get<RegistrationCommand>(parsed), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, RegistrationRequest,
                         testing::Values(RegistrationRow{"Register", {"register"}, {.what = Registering::add}},
                                         RegistrationRow{"Unregister", {"unregister"}, {.what = Registering::remove}},
                                         RegistrationRow{"Status", {"status"}, {.what = Registering::look}},
                                         RegistrationRow{"StatusAndSettings",
                                                         {"--open", "status"},
                                                         {.what = Registering::look, .openSettings = true}}),
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
                    RefusedRow{"OptionOnly", {"--without-grant"}, "say what to do"},
                    RefusedRow{"Mistyped", {"instal", "a.pkg"}, "'instal' is not a request (did you mean 'install'?)"},
                    RefusedRow{
                        "LegacyMistyped", {"legasy", "finalize"}, "'legasy' is not a request (did you mean 'legacy'?)"},
                    RefusedRow{"LegacyAlone", {"legacy"}, "legacy needs a request"},
                    RefusedRow{"LegacyUnknown", {"legacy", "explode"}, "'explode' is not a request"},
                    RefusedRow{"LegacyTwice", {"legacy", "legacy", "finalize"}, "'legacy' is not a request"},
                    RefusedRow{"LegacyPing", {"legacy", "ping"}, "ping has no legacy form"},
                    RefusedRow{"LegacyDoctor", {"legacy", "doctor"}, "doctor has no legacy form"},
                    RefusedRow{"LegacyUninstall", {"legacy", "uninstall"}, "uninstall has no legacy form"},
                    RefusedRow{"LegacyStatus", {"legacy", "status"}, "'status' is not a request"},
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
        RefusedRow{"UninstallOfTwo", {"uninstall", "/a", "/b"}, "uninstall does not take '/b'"},
        RefusedRow{"StatusWithOne", {"status", "x"}, "status does not take 'x'"},
        RefusedRow{"PingWithOne", {"ping", "x"}, "ping does not take 'x'"},
        RefusedRow{"UsersWithOne", {"users", "x"}, "users does not take 'x'"},
        RefusedRow{"PrepareRemovalWithOne", {"prepare-removal", "x"}, "prepare-removal does not take 'x'"},
        RefusedRow{"FinalizeWithOne", {"finalize", "x"}, "finalize does not take 'x'"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Options, RefusedCommand,
    testing::Values(
        RefusedRow{"RegisterTime", {"register", "--timeout", "1"}, "register does not take '--timeout'"},
        RefusedRow{"RegisterSettings", {"register", "--open-settings"}, "register does not take '--open-settings'"},
        RefusedRow{"PingSettings", {"ping", "--open-settings"}, "ping does not take '--open-settings'"},
        RefusedRow{
            "PingAudio", {"ping", "--accept-audio-interruption"}, "ping does not take '--accept-audio-interruption'"},
        RefusedRow{"PingForPrograms", {"ping", "--json"}, "ping does not take '--json'"},
        RefusedRow{"StatusTime", {"status", "--timeout", "1"}, "status does not take '--timeout'"},
        RefusedRow{"StatusSettingsAndTime", {"status", "--open", "--timeout", "1"}, "status does not take '--timeout'"},
        RefusedRow{"InstallForPrograms", {"install", "a", "--json"}, "install does not take '--json'"},
        RefusedRow{"DoctorWithOne", {"doctor", "x"}, "doctor does not take 'x'"},
        RefusedRow{"DoctorAudio",
                   {"doctor", "--accept-audio-interruption"},
                   "doctor does not take '--accept-audio-interruption'"},
        RefusedRow{"DoctorGrant", {"doctor", "--without-grant"}, "doctor does not take '--without-grant'"},
        RefusedRow{"DoctorUnchecked", {"doctor", "--without-checks"}, "doctor does not take '--without-checks'"},
        RefusedRow{"DoctorSettings", {"doctor", "--open-settings"}, "doctor does not take '--open-settings'"},
        RefusedRow{"PingGrant", {"ping", "--without-grant"}, "ping does not take '--without-grant'"},
        RefusedRow{"PingManifest", {"ping", "--manifest", "m"}, "ping does not take '--manifest'"},
        RefusedRow{"UsersAudio",
                   {"users", "--accept-audio-interruption"},
                   "users does not take '--accept-audio-interruption'"},
        RefusedRow{"UsersGrant", {"users", "--without-grant"}, "users does not take '--without-grant'"},
        RefusedRow{"UsersManifest", {"users", "--manifest", "m"}, "users does not take '--manifest'"},
        RefusedRow{"InstallUnknown", {"install", "--force", "a.pkg"}, "'--force' is not an option"},
        RefusedRow{"LegacyInstallGrant",
                   {"legacy", "install", "a.pkg", "--without-grant"},
                   "install does not take '--without-grant'"},
        RefusedRow{"PrepareRemovalManifest",
                   {"prepare-removal", "--manifest", "m"},
                   "prepare-removal does not take '--manifest'"},
        RefusedRow{"PrepareRemovalUnknown", {"prepare-removal", "--force"}, "'--force' is not an option"},
        RefusedRow{"RemoveBundleAudio",
                   {"remove-bundle", "/x", "--accept-audio-interruption"},
                   "remove-bundle does not take '--accept-audio-interruption'"},
        RefusedRow{
            "RemoveBundleManifest", {"remove-bundle", "--manifest", "m"}, "remove-bundle does not take '--manifest'"},
        RefusedRow{"FinalizeUnchecked", {"finalize", "--without-checks"}, "finalize does not take '--without-checks'"},
        RefusedRow{"LegacyUnchecked",
                   {"legacy", "remove-bundle", "/x", "--without-checks"},
                   "remove-bundle does not take '--without-checks'"},
        RefusedRow{"FinalizeAudio",
                   {"finalize", "--accept-audio-interruption"},
                   "finalize does not take '--accept-audio-interruption'"},
        RefusedRow{"FinalizeManifest", {"finalize", "--manifest", "m"}, "finalize does not take '--manifest'"},
        RefusedRow{"LegacyFinalizeGrant",
                   {"legacy", "finalize", "--without-grant"},
                   "finalize does not take '--without-grant'"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    WordsThatAreNoOptions, RefusedCommand,
    testing::Values(RefusedRow{"Mistyped",
                               {"install", "a.pkg", "--manifets", "m"},
                               "'--manifets' is not an option (did you mean '--manifest'?)"},
                    RefusedRow{"MistypedWithAValue",
                               {"install", "a.pkg", "--manifets=m"},
                               "'--manifets' is not an option (did you mean '--manifest'?)"},
                    RefusedRow{"OneLetter", {"ping", "-x"}, "'-x' is not an option"},
                    RefusedRow{"OneLetterOfSeveral", {"ping", "-xy"}, "'-x' is not an option"},
                    RefusedRow{"TheFirstOfTwo", {"ping", "--red", "--blue"}, "'--red' is not an option"},
                    RefusedRow{
                        "ValueForNothing", {"finalize", "--without-grant=yes"}, "--without-grant takes no value"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Timeouts, RefusedCommand,
    testing::Values(
        RefusedRow{"Missing", {"ping", "--timeout"}, "--timeout needs a number of seconds"},
        RefusedRow{"Empty", {"ping", "--timeout="}, "--timeout needs a whole number of seconds from 1 to 86400"},
        RefusedRow{"Zero", {"ping", "--timeout", "0"}, "--timeout needs a whole number of seconds from 1 to 86400"},
        RefusedRow{
            "Negative", {"ping", "--timeout", "-1"}, "--timeout needs a whole number of seconds from 1 to 86400"},
        RefusedRow{"MoreThanADay",
                   {"ping", "--timeout", "86401"},
                   "--timeout needs a whole number of seconds from 1 to 86400"},
        RefusedRow{"MoreThanANumberHolds",
                   {"ping", "--timeout", "99999999999999999999"},
                   "--timeout needs a whole number of seconds from 1 to 86400"},
        RefusedRow{
            "WithAUnit", {"ping", "--timeout", "5s"}, "--timeout needs a whole number of seconds from 1 to 86400"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CommandLineTest, HelpIsGivenWhereverItIsAskedFor) {
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"--help"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"-h"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"install", "--help"})));
  EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseCommandLine({"explode", "--red", "-h"})));
}

TEST(CommandLineTest, OptionsBehindTheRequestDoNotDependOnTheEnvironment) {
  ::setenv("POSIXLY_CORRECT", "1", 1);
  const auto parsed = parseCommandLine({"finalize", "--without-grant"});
  ::unsetenv("POSIXLY_CORRECT");

  ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed));
  EXPECT_EQ(std::get<CommandLine>(parsed), (CommandLine{.verb = Verb::finalize, .withoutGrant = true}));
}

TEST(CommandLineTest, TheVersionCanBeAskedFor) {
  EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseCommandLine({"--version"})));
  EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseCommandLine({"ping", "--version"})));
}

TEST(CommandLineTest, TheHelpTellsRequestsAndOptions) {
  EXPECT_EQ(helpText(), R"(usage: halvo-app REQUEST [OPTION...]

Asks the privileged helper of the Halvo audio product for one thing and prints its reply.

  ping                                   the helper's version
  users                                  the users with a graphical login session
  register                               register the helper with the system
  unregister                             take the registration back; a helper that runs may end
  status                                 how the system regards the registration
  doctor [--json]                        what is installed, what is wrong, and what to do about it
  install PKG --manifest FILE            install a signed system package
  uninstall [PATH]                       remove the system parts, the application and the helper, in this order
  prepare-removal                        remove the product's system parts
  remove-bundle PATH                     remove the application bundle
  finalize                               unregister the helper and stop it
  legacy install|prepare-removal|remove-bundle|finalize ...
                                         the same without authorization, as old applications ask; always refused

  --manifest FILE                        the package's manifest; - is standard input (install)
  --json                                 report for programs (doctor)
  --accept-audio-interruption            go on although audio is running (install, uninstall,
                                         prepare-removal)
  --open-settings                        show where System Settings asks for approval (status)
  --timeout SECONDS                      wait no longer for a reply; what the helper has begun, it finishes
  --without-grant                        send an authorization that was never approved, to see it refused
  --without-checks                       send what this program would refuse itself (install, uninstall,
                                         remove-bundle)
  -h, --help, --version

Options may stand anywhere; what follows -- is none. Requests that change the machine ask an administrator for approval
first. The reply goes to standard output as it came, everything else to standard error. The exit status is 0 when the
request succeeded; halvo-app(1) lists the others.
)");
}

}  // namespace
}  // namespace halvo
