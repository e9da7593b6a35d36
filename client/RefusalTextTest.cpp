#include "client/RefusalText.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

// Everything that may be seen besides a reply.
Seen everything() {
  return {.manifestNamesVersion = false, .productWasInstalled = false, .stagingWasLeft = true, .diskIsFull = true};
}

struct SeenRow {
  const char* name;
  Seen seen;
  const char* code;
  const char* reply;
  const char* text;
};

class RefusalText : public testing::TestWithParam<SeenRow> {};

TEST_P(RefusalText, NamesTheCauseThatBelongsToTheCode) {
  EXPECT_EQ(refusalText(GetParam().code, GetParam().reply, GetParam().seen), GetParam().text);
}

// Each code looks at what tells its own causes apart.
INSTANTIATE_TEST_SUITE_P(
    SeenForThisCode, RefusalText,
    testing::Values(
        SeenRow{"FullDiskAlone",
                {.diskIsFull = true},
                "untrusted_package",
                R"({"reason":"staging_failed"})",
                "The disk is full: it has no room for a copy of the package. Nothing was changed. Make room and try "
                "again."},
        SeenRow{"StagingLeftAlone",
                {.stagingWasLeft = true},
                "untrusted_package",
                R"({"reason":"staging_failed"})",
                "An install that was broken off had left its copy of a package behind, which this attempt removed. "
                "Nothing else was changed. Try again."},
        SeenRow{"NothingToCopyBack",
                {.productWasInstalled = false},
                "rolled_back",
                R"({"log_path":"/x.log"})",
                "The installer failed. Nothing of the product had been installed, so nothing was copied back; what "
                "the installer left, \"halvo-app prepare-removal\" removes. /var/log/install.log says why it failed. "
                "The helper's log: /x.log"},
        SeenRow{"ManifestWithoutAVersion",
                {.manifestNamesVersion = false},
                "downgrade",
                R"({"installed":"2.1","incoming":"0"})",
                "The manifest names no \"driver_version\", and version 2.1 is installed. Nothing was changed. Use the "
                "manifest that came with the package."}),
    [](const auto& row) { return std::string(row.param.name); });

// And at nothing that tells the causes of another one apart.
INSTANTIATE_TEST_SUITE_P(
    SeenForAnotherCode, RefusalText,
    testing::Values(
        SeenRow{"RolledBack",
                {.manifestNamesVersion = false, .stagingWasLeft = true, .diskIsFull = true},
                "rolled_back",
                R"({"log_path":"/x.log","reason":"staging_failed"})",
                "The installer failed, and what had been saved of the previous installation was copied back. "
                "/var/log/install.log says why it failed. The helper's log: /x.log"},
        SeenRow{"Downgrade",
                {.productWasInstalled = false, .stagingWasLeft = true, .diskIsFull = true},
                "downgrade",
                R"({"installed":"2.1","incoming":"2.0","reason":"staging_failed"})",
                "The manifest names an older driver than the installed one. Nothing was changed. Installed: 2.1; in "
                "the manifest: 2.0."},
        SeenRow{"StagingFailed",
                {.manifestNamesVersion = false, .productWasInstalled = false},
                "untrusted_package",
                R"({"reason":"staging_failed"})",
                "The package was refused and nothing was changed. The helper could not take the package in: it must "
                "be a regular file, no link, of at most 256 MiB, in a folder that the helper may read, and the disk "
                "must have room for a copy. Put it into another folder than Downloads, Desktop or Documents and try "
                "again."},
        SeenRow{"OtherReason", everything(), "untrusted_package", R"({"reason":"unsigned"})",
                "The package was refused and nothing was changed. The package is not signed. Use a package from the "
                "maker."},
        SeenRow{"InstallFailed", everything(), "install_failed", R"({"log_path":"/x.log","reason":"staging_failed"})",
                "The install failed. /var/log/install.log says why. The helper's log: /x.log"},
        SeenRow{"Incomplete", everything(), "incomplete", R"({"log_path":"/x.log","reason":"staging_failed"})",
                "Something could not be removed. Try again, or remove by hand what the log names: /x.log"},
        SeenRow{"AudioActive", everything(), "audio_active", R"({"log_path":"/x.log","reason":"staging_failed"})",
                "Audio is running and would be interrupted. Stop it, or try again with --accept-audio-interruption. "
                "Nothing was changed."}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    UnknownCode, RefusalText,
    testing::Values(SeenRow{"New", everything(), "surprise", R"({"log_path":"/x.log","reason":"staging_failed"})", ""},
                    SeenRow{"Empty", everything(), "", R"({"log_path":"/x.log","reason":"staging_failed"})", ""}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    StrangeMembers, RefusalText,
    testing::Values(SeenRow{"NoReason",
                            {},
                            "untrusted_package",
                            "{}",
                            "The package was refused and nothing was changed. The reason is ?."},
                    SeenRow{"EmptyReason",
                            {},
                            "untrusted_package",
                            R"({"reason":""})",
                            "The package was refused and nothing was changed. The reason is ."},
                    SeenRow{"ReasonThatMovesTheCursor",
                            {},
                            "untrusted_package",
                            R"({"reason":"\u001b[2J"})",
                            "The package was refused and nothing was changed. The reason is \\033[2J."},
                    SeenRow{"VersionThatMovesTheCursor",
                            {.manifestNamesVersion = false},
                            "downgrade",
                            R"({"installed":"\u001b[2J"})",
                            "The manifest names no \"driver_version\", and version \\033[2J is installed. Nothing was "
                            "changed. Use the manifest that came with the package."}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo
