#include "sim/tools/PackageCommand.h"

#include <gmock/gmock.h>
#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "sim/tools/Archive.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/Xml.h"
#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::vector<std::string> namesIn(archive* reader) {
  std::vector<std::string> names;
  while (archive_entry* entry = nextEntry(reader)) names.emplace_back(archive_entry_pathname(entry));
  return names;
}

// As a general archiver reads it, without a word about packages.
std::vector<std::string> archiveMembers(const std::string& file) {
  const ScopedReader reader(archive_read_new());
  archive_read_support_format_all(reader.get());
  archive_read_support_filter_all(reader.get());
  requireDone(reader.get(), archive_read_open_filename(reader.get(), file.c_str(), 10240));
  return namesIn(reader.get());
}

std::string decompressed(const std::string& bytes) {
  const ScopedReader reader(archive_read_new());
  archive_read_support_filter_gzip(reader.get());
  archive_read_support_format_raw(reader.get());
  requireDone(reader.get(), archive_read_open_memory(reader.get(), bytes.data(), bytes.size()));
  nextEntry(reader.get());
  std::string plain(1024UL * 1024 * 16, '\0');
  plain.resize(static_cast<std::size_t>(archive_read_data(reader.get(), plain.data(), plain.size())));
  return plain;
}

std::string memberOf(const std::string& package, const std::string& name) {
  return std::string(FlatPackage::read(package).member(name).value_or("absent"));
}

std::string plistValue(const std::string& text, const char* key) {
  plist_t root = nullptr;
  plist_from_memory(text.data(), static_cast<std::uint32_t>(text.size()), &root);
  char* value = nullptr;
  plist_get_string_val(plist_dict_get_item(root, key), &value);
  const std::string copy = value == nullptr ? "" : value;
  std::free(value);
  plist_free(root);
  return copy;
}

struct Outcome {
  int status;
  std::string complaint;
};

Outcome command(const std::vector<std::string>& arguments) {
  testing::internal::CaptureStderr();
  const int status = packageCommand(arguments);
  return {status, testing::internal::GetCapturedStderr()};
}

TEST(PackageCommandTest, APackageIsAnArchiveThatAnyArchiverLists) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\n");

  EXPECT_THAT(archiveMembers(machine.package("1.2.0", {"--postinstall", script})),
              ElementsAre("PackageInfo", "Payload", "Scripts", "signature-report"));
}

TEST(PackageCommandTest, WithoutAScriptThereIsNoScriptsMember) {
  const ToolMachine machine;

  EXPECT_THAT(archiveMembers(machine.package("1.2.0")), ElementsAre("PackageInfo", "Payload", "signature-report"));
}

TEST(PackageCommandTest, ThePayloadHoldsTheProductInTheOrderOfInstallation) {
  const ToolMachine machine;
  const std::string payload = memberOf(machine.package("1.2.0"), "Payload");

  EXPECT_THAT(
      namesIn(openCpio(payload).get()),
      ElementsAre(".", "./Library", "./Library/Audio", "./Library/Audio/Plug-Ins", "./Library/Audio/Plug-Ins/HAL",
                  "./Library/Audio/Plug-Ins/HAL/Halvo.driver", "./Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents",
                  "./Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist",
                  "./Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/MacOS",
                  "./Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/MacOS/Halvo", "./Library/PrivilegedHelperTools",
                  "./Library/PrivilegedHelperTools/halvo-broker", "./Library/LaunchDaemons",
                  "./Library/LaunchDaemons/com.halvo.broker.plist", "./Library/LaunchAgents",
                  "./Library/LaunchAgents/com.halvo.daemon.plist"));
}

TEST(PackageCommandTest, TheReportTravelsUnchanged) {
  const ToolMachine machine;
  const std::string report = machine.file("report", "Package \"x\":\n   Status: \xFF odd\n");
  const std::string package = machine.beside("x.pkg");

  ASSERT_EQ(packageCommand({package, "--version", "1", "--report", report}), 0);

  EXPECT_EQ(memberOf(package, "signature-report"), "Package \"x\":\n   Status: \xFF odd\n");
}

TEST(PackageCommandTest, TheVersionIsFreeText) {
  const ToolMachine machine;
  const std::string info = memberOf(machine.package("1.2 <b> & \"c\""), "PackageInfo");

  EXPECT_EQ(xmlAttribute(info, "pkg-info", "version"), "1.2 <b> & \"c\"");
  EXPECT_EQ(xmlAttribute(info, "pkg-info", "identifier"), "com.halvo.pkg");
}

TEST(PackageCommandTest, TheDriverNamesItsVersion) {
  const std::string info = productFile("1.2 <b> & \"c\"", "/Info.plist");

  EXPECT_EQ(plistValue(info, "CFBundleVersion"), "1.2 <b> & \"c\"");
  EXPECT_EQ(plistValue(info, "CFBundleIdentifier"), "com.halvo.driver");
}

TEST(PackageCommandTest, TheJobsNameTheirPrograms) {
  const std::string broker = productFile("1", "com.halvo.broker.plist");
  const std::string agent = productFile("1", "com.halvo.daemon.plist");

  EXPECT_EQ(plistValue(broker, "Label"), "com.halvo.broker");
  EXPECT_EQ(plistValue(broker, "Program"), "/Library/PrivilegedHelperTools/halvo-broker");
  EXPECT_EQ(plistValue(agent, "Label"), "com.halvo.daemon");
  EXPECT_EQ(plistValue(agent, "Program"), "/Applications/Halvo.app/Contents/MacOS/halvo-daemon");
}

TEST(PackageCommandTest, TheSameInputsMakeTheSameMembers) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\n");
  const FlatPackage first = FlatPackage::read(machine.package("1.2.0", {"--postinstall", script}));
  const FlatPackage second = FlatPackage::read(machine.package("1.2.0", {"--postinstall", script}));

  EXPECT_TRUE(first == second);
  EXPECT_EQ(first.member("Scripts").value_or("").substr(0, 8), std::string("\x1F\x8B\x08\0\0\0\0\0", 8));
}

TEST(PackageCommandTest, AnotherVersionHasAnotherDriverAndAnotherBroker) {
  EXPECT_FALSE(productFile("1.2.0", "/Halvo") == productFile("1.2.1", "/Halvo"));
  EXPECT_FALSE(productFile("1.2.0", "/halvo-broker") == productFile("1.2.1", "/halvo-broker"));
}

TEST(PackageCommandTest, ATruncatedPayloadIsTheBeginningOfTheWholeOne) {
  const ToolMachine machine;
  const std::string whole = memberOf(machine.package("1.2.0"), "Payload");
  const std::string part = memberOf(machine.package("1.2.0", {"--truncate-payload", "60000"}), "Payload");

  EXPECT_EQ(decompressed(part).size(), 60000U);
  EXPECT_TRUE(decompressed(whole).starts_with(decompressed(part)));
}

struct UsageRow {
  const char* name;
  std::vector<std::string> arguments;
  const char* complaint;
};

class WrongUsage : public testing::TestWithParam<UsageRow> {};

TEST_P(WrongUsage, IsExplainedAndMakesNothing) {
  const TemporaryDirectory directory;
  std::vector<std::string> arguments = GetParam().arguments;
  std::ranges::replace(arguments, "OUT", (directory.path() / "out.pkg").string());
  std::ranges::replace(arguments, "REPORT", reportFile("good.txt"));

  const Outcome outcome = command(arguments);

  EXPECT_EQ(outcome.status, 64);
  EXPECT_THAT(outcome.complaint, StartsWith(std::string("halvo-sim package: ") + GetParam().complaint));
  EXPECT_THAT(outcome.complaint, HasSubstr("; call it as: halvo-sim package OUT.pkg --version V --report FILE"));
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

INSTANTIATE_TEST_SUITE_P(
    Table, WrongUsage,
    testing::Values(UsageRow{"Nothing", {}, "No package file is named"},
                    UsageRow{"NoVersion", {"OUT", "--report", "REPORT"}, "No --version is given"},
                    UsageRow{"NoReport", {"OUT", "--version", "1"}, "No signature report is given with --report"},
                    UsageRow{"EmptyVersion", {"OUT", "--version", "", "--report", "REPORT"}, "No --version is given"},
                    UsageRow{"NoValue", {"OUT", "--version", "1", "--report"}, "--report has no value"},
                    UsageRow{"UnknownOption", {"OUT", "--versoin", "1"}, "\"--versoin\" is no option"},
                    UsageRow{"TwoPackages", {"OUT", "b.pkg", "--version", "1"}, "\"b.pkg\" is a second package"},
                    UsageRow{"OptionTwice", {"OUT", "--version", "1", "--version", "2"}, "--version is given twice"},
                    UsageRow{"NoNumber",
                             {"OUT", "--version", "1", "--report", "REPORT", "--truncate-payload", "1k"},
                             "\"1k\" is no number of bytes"},
                    UsageRow{"NegativeNumber",
                             {"OUT", "--version", "1", "--report", "REPORT", "--truncate-payload", "-1"},
                             "\"-1\" is no number of bytes"},
                    UsageRow{"MoreThanThereIs",
                             {"OUT", "--version", "1", "--report", "REPORT", "--truncate-payload", "99999999"},
                             "The payload has only "}),
    [](const auto& row) { return row.param.name; });

TEST(PackageCommandTest, AReportThatIsNotThereIsNamed) {
  const TemporaryDirectory directory;
  const std::string report = directory.path() / "absent.txt";

  const Outcome outcome = command({directory.path() / "out.pkg", "--version", "1", "--report", report});

  EXPECT_EQ(outcome.status, 66);
  EXPECT_THAT(outcome.complaint, HasSubstr("\"" + report + "\" cannot be read; name a file that exists"));
}

TEST(PackageCommandTest, AFolderIsNoReport) {
  const TemporaryDirectory directory;

  EXPECT_EQ(command({directory.path() / "out.pkg", "--version", "1", "--report", directory.path()}).status, 66);
}

TEST(PackageCommandTest, AScriptThatIsNotThereIsNamed) {
  const TemporaryDirectory directory;
  const std::string script = directory.path() / "absent.sh";

  const Outcome outcome = command(
      {directory.path() / "out.pkg", "--version", "1", "--report", reportFile("good.txt"), "--postinstall", script});

  EXPECT_EQ(outcome.status, 66);
  EXPECT_THAT(outcome.complaint, HasSubstr(script));
}

TEST(PackageCommandTest, APackageThatCannotBeWrittenIsNamed) {
  const TemporaryDirectory directory;
  const std::string package = directory.path() / "absent/out.pkg";

  const Outcome outcome = command({package, "--version", "1", "--report", reportFile("good.txt")});

  EXPECT_EQ(outcome.status, 73);
  EXPECT_THAT(outcome.complaint, HasSubstr("\"" + package + "\" cannot be written ("));
  EXPECT_THAT(outcome.complaint, HasSubstr("; name a file in a folder that exists and has room."));
}

TEST(PackageCommandTest, AFullDeviceIsReportedAndStaysADevice) {
  const Outcome outcome = command({"/dev/full", "--version", "1", "--report", reportFile("good.txt")});

  EXPECT_EQ(outcome.status, 73);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace halvo::sim
