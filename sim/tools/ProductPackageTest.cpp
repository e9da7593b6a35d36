#include "sim/tools/ProductPackage.h"

#include <gmock/gmock.h>

#include <span>

#include "platform/PropertyList.h"
#include "sim/tools/Archive.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/Xml.h"
#include "sim/tools/testing/ToolMachine.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

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

PropertyListValue plistValue(const std::string& text, const std::string& key) {
  const auto list = halvoReadPropertyList(std::as_bytes(std::span(text)));
  return list.value().at(key);
}

// The exit status that goes with the problem.
int problemOf(const PackageOrder& order, const std::string& sentence) {
  try {
    buildPackage(order);
    return 0;
  } catch (const PackageProblem& problem) {
    EXPECT_THAT(problem.what(), HasSubstr(sentence));
    return problem.status;
  }
}

TEST(ProductPackageTest, APackageIsAnArchiveThatAnyArchiverLists) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\n");

  EXPECT_THAT(archiveMembers(machine.package("1.2.0", {.postinstall = script})),
              ElementsAre("PackageInfo", "Payload", "Scripts", "signature-report"));
}

TEST(ProductPackageTest, WithoutAScriptThereIsNoScriptsMember) {
  const ToolMachine machine;

  EXPECT_THAT(archiveMembers(machine.package("1.2.0")), ElementsAre("PackageInfo", "Payload", "signature-report"));
}

TEST(ProductPackageTest, ThePayloadHoldsTheProductInTheOrderOfInstallation) {
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

TEST(ProductPackageTest, TheReportTravelsUnchanged) {
  const ToolMachine machine;
  const std::string report = machine.file("report", "Package \"x\":\n   Status: \xFF odd\n");

  EXPECT_EQ(memberOf(machine.package("1", {.report = report}), "signature-report"),
            "Package \"x\":\n   Status: \xFF odd\n");
}

TEST(ProductPackageTest, TheVersionIsFreeText) {
  const ToolMachine machine;
  const std::string info = memberOf(machine.package("1.2 <b> & \"c\""), "PackageInfo");

  EXPECT_EQ(xmlAttribute(info, "pkg-info", "version"), "1.2 <b> & \"c\"");
  EXPECT_EQ(xmlAttribute(info, "pkg-info", "identifier"), "com.halvo.pkg");
}

TEST(ProductPackageTest, TheDriverNamesItsVersion) {
  const std::string info = productFile("1.2 <b> & \"c\"", "/Info.plist");

  EXPECT_EQ(plistValue(info, "CFBundleVersion"), PropertyListValue("1.2 <b> & \"c\""));
  EXPECT_EQ(plistValue(info, "CFBundleIdentifier"), PropertyListValue("com.halvo.driver"));
}

TEST(ProductPackageTest, TheJobsNameTheirPrograms) {
  const std::string broker = productFile("1", "com.halvo.broker.plist");
  const std::string agent = productFile("1", "com.halvo.daemon.plist");

  EXPECT_EQ(plistValue(broker, "Label"), PropertyListValue("com.halvo.broker"));
  EXPECT_EQ(plistValue(broker, "Program"), PropertyListValue("/Library/PrivilegedHelperTools/halvo-broker"));
  EXPECT_EQ(plistValue(agent, "Label"), PropertyListValue("com.halvo.daemon"));
  EXPECT_EQ(plistValue(agent, "Program"), PropertyListValue("/Applications/Halvo.app/Contents/MacOS/halvo-daemon"));
}

TEST(ProductPackageTest, TheSameInputsMakeTheSameMembers) {
  const ToolMachine machine;
  const std::string script = machine.file("script", "#!/bin/sh\n");
  const FlatPackage first = FlatPackage::read(machine.package("1.2.0", {.postinstall = script}));
  const FlatPackage second = FlatPackage::read(machine.package("1.2.0", {.postinstall = script}));

  EXPECT_TRUE(first == second);
  EXPECT_EQ(first.member("Scripts").value_or("").substr(0, 8), std::string("\x1F\x8B\x08\0\0\0\0\0", 8));
}

TEST(ProductPackageTest, AnotherVersionHasAnotherDriverAndAnotherBroker) {
  EXPECT_FALSE(productFile("1.2.0", "/Halvo") == productFile("1.2.1", "/Halvo"));
  EXPECT_FALSE(productFile("1.2.0", "/halvo-broker") == productFile("1.2.1", "/halvo-broker"));
}

TEST(ProductPackageTest, ATruncatedPayloadIsTheBeginningOfTheWholeOne) {
  const ToolMachine machine;
  const std::string whole = memberOf(machine.package("1.2.0"), "Payload");
  const std::string part = memberOf(machine.package("1.2.0", {.payloadBytes = 60000}), "Payload");

  EXPECT_EQ(decompressed(part).size(), 60000U);
  EXPECT_TRUE(decompressed(whole).starts_with(decompressed(part)));
}

TEST(ProductPackageTest, MoreThanThePayloadHasCannotBeCutOff) {
  const ToolMachine machine;

  EXPECT_THROW(machine.package("1.2.0", {.payloadBytes = 99'999'999}), PackageProblem);
}

TEST(ProductPackageTest, AReportOrScriptThatCannotBeReadIsNamed) {
  const TemporaryDirectory directory;
  const std::string out = directory.path("out.pkg");
  const std::string absent = directory.path("absent");

  EXPECT_EQ(problemOf({.package = out, .version = "1", .report = absent}, "\"" + absent + "\" cannot be read"), 66);
  EXPECT_EQ(problemOf({.package = out, .version = "1", .report = directory.path()}, "cannot be read"), 66);
  EXPECT_EQ(
      problemOf({.package = out, .version = "1", .report = reportFile("good.txt"), .postinstall = absent}, absent), 66);
}

TEST(ProductPackageTest, APackageThatCannotBeWrittenIsNamed) {
  const TemporaryDirectory directory;
  const std::string package = directory.path("absent/out.pkg");

  EXPECT_EQ(problemOf({.package = package, .version = "1", .report = reportFile("good.txt")},
                      "\"" + package + "\" cannot be written ("),
            73);
}

}  // namespace
}  // namespace halvo::sim
