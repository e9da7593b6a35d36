// halvo-app doctor on whole and on broken machines.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "platform/JSONObject.h"
#include "tests/RemovalScenario.h"

namespace halvo::sim {
namespace {

using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;
using testing::SizeIs;

constexpr const char* kDriver = "/Library/Audio/Plug-Ins/HAL/Halvo.driver";
constexpr const char* kDriverInfo = "/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist";
constexpr const char* kBroker = "/Library/PrivilegedHelperTools/halvo-broker";
constexpr const char* kSnapshot = "/var/db/halvo/install-rollback/1771000000";
constexpr const char* kRightsFile = "authorization-db/com.halvo.helper.manage-system.json";

// A report is wrapped to the width of a terminal; what it says is compared without its line ends.
std::string unwrapped(const std::string& report) {
  std::istringstream words(report);
  std::string text;
  for (std::string word; words >> word;) text += (text.empty() ? "" : " ") + word;
  return text;
}

class DoctorScenario : public RemovalScenario {
 protected:
  CommandResult doctor(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {"doctor"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return machine.app(arguments);
  }
};

TEST_F(DoctorScenario, OnAHealthyMachineOneScreenSaysSo) {
  installed();

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, HasSubstr("Service    answers: protocol 6, build ABI 1; "));
  EXPECT_THAT(result.out, HasSubstr("\nUsers      501 with a graphical session\n"));
  EXPECT_THAT(result.out, HasSubstr("\nRight      com.halvo.helper.manage-system: sound\n"));
  EXPECT_THAT(result.out, HasSubstr("Halvo.driver         1.2.0        root:wheel   755\n"));
  EXPECT_THAT(result.out, HasSubstr("com.halvo.pkg.plist             1.2.0        root:wheel   644\n"));
  EXPECT_THAT(result.out, HasSubstr(" none: a first install\n"));
  EXPECT_THAT(result.out, EndsWith("\nNothing is found to be wrong.\n"));
  EXPECT_THAT(splitLines(result.out), SizeIs(testing::Le(24)));
  EXPECT_THAT(splitLines(result.out),
              Each(testing::ResultOf([](const auto& line) { return line.size(); }, testing::Le(80U))));
}

TEST_F(DoctorScenario, AfterAnUpdateTheSnapshotIsComplete) {
  installed();
  std::filesystem::remove_all(mac().path("/var/db/halvo/install-rollback"));
  machine.app(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"})));

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(unwrapped(result.out), testing::ContainsRegex(" 1\\.2\\.0 [0-9]+ [KM]B [0-9]+ s complete Log "));
}

TEST_F(DoctorScenario, ChangesNothing) {
  installed();
  doctor();
  const std::vector<std::string> places = {"/Applications", "/Library", "/private/var/db",
                                           "/private/var/log/halvo-install.log"};
  const TreeSnapshot before = mac().snapshotTree(places);
  const std::string prompts = mac().readState("authorization-prompts");

  doctor();

  EXPECT_THAT(changesBetween(before, mac().snapshotTree(places)), testing::IsEmpty());
  EXPECT_EQ(mac().readState("authorization-prompts"), prompts);
}

// A machine on which one thing is broken, the words for it, and the status of the process.
struct BrokenRow {
  const char* name;
  void (*damage)(ProductMachine& machine);
  const char* finding;
  const char* hint;
  int status = 1;
};

class BrokenMachine : public DoctorScenario, public testing::WithParamInterface<BrokenRow> {};

TEST_P(BrokenMachine, IsToldWithWhatToDo) {
  installed();
  GetParam().damage(machine);

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_THAT(result.out, HasSubstr("\n1 finding:\n"));
  EXPECT_THAT(unwrapped(result.out), HasSubstr(std::string("! ") + GetParam().finding + " " + GetParam().hint));
}

void removeTree(ProductMachine& machine, const char* path) { std::filesystem::remove_all(machine.mac().path(path)); }

void putFifo(ProductMachine& machine, const char* path) {
  std::filesystem::remove(machine.mac().path(path));
  ::mkfifo(machine.mac().path(path).c_str(), 0644);
}

void saveParts(ProductMachine& machine, const char* driverInfo) {
  const std::string snapshot = kSnapshot;
  machine.mac().writeFile(snapshot + "/Halvo.driver/Contents/Info.plist", driverInfo);
  machine.mac().writeFile(snapshot + "/halvo-broker", "program");
  machine.mac().writeFile(snapshot + "/com.halvo.broker.plist", "list");
  machine.mac().writeFile(snapshot + "/com.halvo.daemon.plist", "list");
}

constexpr const char* kInstallAgain =
    "The product is not whole: an install or a removal was cut off, or somebody removed the part. Install the package "
    "again.";
constexpr const char* kVersionHint =
    "Its property list is missing or damaged, so that the versions of packages cannot be compared with it. Install the "
    "package again.";

INSTANTIATE_TEST_SUITE_P(
    Parts, BrokenMachine,
    testing::Values(
        BrokenRow{"NoBroker", [](ProductMachine& machine) { removeTree(machine, kBroker); },
                  "/Library/PrivilegedHelperTools/halvo-broker is missing.", kInstallAgain},
        BrokenRow{
            "LinkForTheDriver",
            [](ProductMachine& machine) {
              std::filesystem::rename(machine.mac().path(kDriver), machine.mac().path("/Library/Elsewhere"));
              std::filesystem::create_symlink("/Library/Elsewhere", machine.mac().path(kDriver));
            },
            "/Library/Audio/Plug-Ins/HAL/Halvo.driver is a link, not a folder.",
            "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is and "
            "remove it. Install the package again."},
        BrokenRow{"BrokerForEverybodyToChange",
                  [](ProductMachine& machine) { ::chmod(machine.mac().path(kBroker).c_str(), 0777); },
                  "/Library/PrivilegedHelperTools/halvo-broker has mode 777, not 755.",
                  "Others than root can change what runs with the system's rights. Install the package again."},
        BrokenRow{"FifoForTheDriversVersion", [](ProductMachine& machine) { putFifo(machine, kDriverInfo); },
                  "/Library/Audio/Plug-Ins/HAL/Halvo.driver has no version that can be read.", kVersionHint},
        BrokenRow{"NoRecordOfThePackage",
                  [](ProductMachine& machine) { removeTree(machine, "/var/db/receipts/com.halvo.pkg.plist"); },
                  "The system has no record of the package com.halvo.pkg.",
                  "The parts did not come by a package, or somebody removed the record. Install the package again."},
        BrokenRow{"NothingOfTheParts", [](ProductMachine& machine) { machine.app({"prepare-removal"}); },
                  "None of the product's system parts is installed.",
                  "Without them there is no audio device. Install the package: \"halvo-app install PACKAGE --manifest "
                  "FILE\"."}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    LeftBehind, BrokenMachine,
    testing::Values(
        BrokenRow{
            "Staging",
            [](ProductMachine& machine) {
              machine.mac().writeFile("/var/db/halvo/install-staging/incoming.pkg", "of a run that was cut off");
            },
            "/var/db/halvo/install-staging is left of an install.",
            "Unless an install runs at this moment, one was broken off. The next install clears it away and may be "
            "refused once for it (staging_failed): install, and once more if need be."},
        BrokenRow{"PartialSnapshot",
                  [](ProductMachine& machine) {
                    machine.mac().writeFile(std::string(kSnapshot) + "/halvo-broker", "program");
                  },
                  "The snapshot 1771000000 lacks Halvo.driver, com.halvo.broker.plist, com.halvo.daemon.plist.",
                  "These parts were not installed at that time, or there was no room to save them: what is copied back "
                  "from there is not the whole product. See that the disk has room; the next install saves all that is "
                  "there."},
        BrokenRow{"DamagedSnapshot", [](ProductMachine& machine) { saveParts(machine, "<plist"); },
                  "The driver in the snapshot 1771000000 is damaged.",
                  "An install was killed while it saved the parts. Copy nothing back from there by hand; the next "
                  "install saves them anew."},
        BrokenRow{
            "LinkForASnapshot",
            [](ProductMachine& machine) { std::filesystem::create_symlink("/Library", machine.mac().path(kSnapshot)); },
            "/var/db/halvo/install-rollback/1771000000 is a link, not a folder.",
            "The helper makes folders there and nothing else. Look whose it is, and remove it."},
        BrokenRow{
            "FifoForALog", [](ProductMachine& machine) { putFifo(machine, "/private/var/log/halvo-install.log"); },
            "/var/log/halvo-install.log is neither file, folder nor link, not a file.",
            "The helper's lines go astray, or where somebody else wants them. Look whose it is and remove it: the "
            "helper makes the log again."}),
    [](const auto& row) { return std::string(row.param.name); });

// The date of a log's line is that of the test.
class FailedOperation : public DoctorScenario, public testing::WithParamInterface<BrokenRow> {};

TEST_P(FailedOperation, IsToldWithWhatToDo) {
  installed();
  GetParam().damage(machine);

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_THAT(unwrapped(result.out), HasSubstr(std::string(" +0000): ") + GetParam().finding + " " + GetParam().hint));
}

INSTANTIATE_TEST_SUITE_P(
    Table, FailedOperation,
    testing::Values(
        BrokenRow{"PackageOfSomebodyElse",
                  [](ProductMachine& machine) {
                    machine.app(
                        ProductMachine::install(machine.package({.name = "other", .report = "wrong-team.txt"})));
                  },
                  "REFUSED untrusted package (wrong_team): leaf: Developer ID Installer: Example Works (AB12CD34EF)",
                  "The package was refused and nothing was changed. The package is signed by somebody else. Use a "
                  "package from the maker."},
        BrokenRow{"OlderDriver",
                  [](ProductMachine& machine) {
                    machine.app(ProductMachine::install(machine.package({.name = "old", .version = "1.1.9"})));
                  },
                  "refusing downgrade: installed=1.2.0 incoming=1.1.9",
                  "A newer driver is installed than the manifest names. Use a newer package, or remove the product "
                  "first."},
        BrokenRow{"RemovalThatLeftSomething",
                  [](ProductMachine& machine) {
                    removeTree(machine, kBroker);
                    std::filesystem::create_directory(machine.mac().path(kBroker));
                    machine.app({"prepare-removal"});
                  },
                  "uninstall incomplete; leftover: /Library/PrivilegedHelperTools/halvo-broker",
                  "Look what holds the parts that the line names, and remove the product again."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(DoctorScenario, ARolledBackInstallIsToldWithWhereToLook) {
  installed();
  mac().writeState("faults/installer", "1\n");
  machine.app(ProductMachine::install(machine.package({.name = "next", .version = "1.3.0"})));

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(unwrapped(result.out), HasSubstr("installer failed; rolling back from /var/db/halvo/install-rollback/"));
  EXPECT_THAT(unwrapped(result.out),
              HasSubstr(" What had been saved was copied back. /var/log/install.log says why the installer failed; "
                        "install again once that is put right."));
}

TEST_F(DoctorScenario, ARefusalThatWasOvercomeIsShownAndNoFinding) {
  start();
  machine.app(ProductMachine::install(machine.package({.name = "other", .report = "wrong-team.txt"})));
  machine.app(ProductMachine::install(machine.package({})));

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(result.out, HasSubstr(", and success since\n  REFUSED untrusted package (wrong_team): "));
}

INSTANTIATE_TEST_SUITE_P(
    Right, BrokenMachine,
    testing::Values(BrokenRow{
        "RewrittenUnderTheHelper",
        [](ProductMachine& machine) { machine.mac().writeState(kRightsFile, R"({"class":"allow"})"); },
        "The right com.halvo.helper.manage-system is not as the helper writes it.",
        "A helper that finds it so refuses every change. Look for software that rewrites authorization "
        "rights. The helper writes it anew whenever it starts: end it with \"sudo killall halvo-helper\", "
        "unless an install or a removal runs, and run doctor again."}),
    [](const auto& row) { return std::string(row.param.name); });

// At this rate the idle exit comes after a second.
TEST_F(DoctorScenario, ARightThatWasRewrittenWhileNoHelperRanIsToldAndRepairedByTheQuestion) {
  mac().writeState("clock-rate", "50\n");
  installed();
  ASSERT_TRUE(waitUntil([&] { return !machine.helperProcess(); }));
  mac().writeState(kRightsFile, R"({"class":"allow"})");

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      unwrapped(result.out),
      HasSubstr("! The right com.halvo.helper.manage-system was not as the helper writes it, until it was started "
                "by this question. The helper has put it right. If this comes again, look for software that "
                "rewrites authorization rights."));
  EXPECT_EQ(doctor().status, 0);
}

constexpr const char* kUnreachableHint =
    "It is not registered or not allowed to start, or does not take this program for the application. Open the Halvo "
    "application, which registers it, and allow it in System Settings, Login Items. Its lines in the system log tell "
    "whom it refused.";

TEST_F(DoctorScenario, AHelperThatIsNotRegisteredIsUnreachable) {
  installed();
  machine.app({"finalize"});
  ASSERT_TRUE(waitUntil([&] { return !machine.job("system", "com.halvo.helper"); }));

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.out, HasSubstr("\n1 finding:\n! The helper cannot be reached ("));
  EXPECT_THAT(unwrapped(result.out), HasSubstr(std::string("). ") + kUnreachableHint));
  EXPECT_THAT(result.out, HasSubstr("Halvo.driver         1.2.0        root:wheel   755\n"));
}

TEST_F(DoctorScenario, ToAProgramThatTheHelperRefusesItIsUnreachable) {
  installed();
  const std::string program =
      machine.signedCopy(mac().path(ProductMachine::kAppProgram), "stranger", "com.halvo.app", "AB12CD34EF");

  const CommandResult result = mac().run(machine.user(), {program, "doctor"});

  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(unwrapped(result.out), HasSubstr(kUnreachableHint));
}

TEST_F(DoctorScenario, AToolThatNeverEndsIsToldWithItsProcess) {
  mac().writeState("clock-rate", "200\n");
  installed();
  mac().writeState("faults/pkgutil", "hang on --check-signature\n");
  const auto install = machine.appAsync(ProductMachine::install(machine.package({.name = "next"})));

  CommandResult result;
  ASSERT_TRUE(waitUntil([&] { return (result = doctor()).status == 1; })) << result.out;

  EXPECT_THAT(result.out, HasSubstr("\nTools      pkgutil for "));
  EXPECT_THAT(result.out, HasSubstr("\n1 finding:\n! The helper's pkgutil, process "));
  EXPECT_THAT(unwrapped(result.out),
              HasSubstr("The helper waits for it without a limit and holds every other change back. Look what it does "
                        "with \"ps -o etime,command -p "));
}

TEST_F(DoctorScenario, WhatOnlyRootMayReadIsNamedAndIsNoFinding) {
  installed();
  if (!mac().supportsSeveralUsers()) GTEST_SKIP() << "here every account is root, which reads all";
  ::chmod(mac().path("/var/db/halvo").c_str(), 0700);

  const CommandResult result = doctor();

  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(
      unwrapped(result.out),
      HasSubstr("You may not read /var/db/halvo/install-rollback, /var/db/halvo/install-staging. \"sudo halvo-app "
                "doctor\" does. Nothing is found to be wrong."));
  EXPECT_THAT(mac().run(0, {ProductMachine::kAppProgram, "doctor"}).out, HasSubstr("\nStaging    none\n"));
}

TEST_F(DoctorScenario, TextFromTheDiskDoesNotReachTheTerminalAsItIs) {
  installed();
  mac().writeFile("/var/log/halvo-uninstall.log",
                  "2026-02-11 09:30:12 +0000: uninstall incomplete; leftover: \x1B[2J\x07\n");
  mac().writeFile(std::string(kSnapshot) + "\x1B[2J/halvo-broker", "program");

  const CommandResult result = doctor();

  EXPECT_THAT(result.out, Not(HasSubstr("\x1B")));
  EXPECT_THAT(result.out, HasSubstr("leftover: \\033[2J\\007\n"));
  EXPECT_THAT(result.out, HasSubstr("! The snapshot 1771000000\\033[2J lacks "));
}

TEST_F(DoctorScenario, ForProgramsItIsOneJSONObject) {
  installed();
  removeTree(machine, kBroker);

  const CommandResult result = doctor({"--json"});

  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(splitLines(result.out), SizeIs(1));
  const auto object = halvoReadJSONObject(result.out).value_or(JSONObject{});
  EXPECT_EQ(object.at("schema"), JSONValue(std::int64_t{1}));
  EXPECT_EQ(object.at("status"), JSONValue(std::int64_t{1}));
  EXPECT_THAT(result.out, HasSubstr(R"("findings":[{"code":"part-missing",)"));
}

}  // namespace
}  // namespace halvo::sim
