#include "sim/tools/ProductPackage.h"

#include <sysexits.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "sim/tools/FlatPackage.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

using Kind = CpioEntry::Kind;

constexpr const char* kIdentifier = "com.halvo.pkg";
constexpr std::size_t kDriverSize = std::size_t{200} * 1024;

CpioEntry folder(const std::string& path) { return {.path = path, .kind = Kind::directory, .mode = 0755}; }

CpioEntry program(const std::string& path, std::string content) {
  return {.path = path, .kind = Kind::file, .mode = 0755, .content = std::move(content)};
}

CpioEntry text(const std::string& path, std::string content) {
  return {.path = path, .kind = Kind::file, .mode = 0644, .content = std::move(content)};
}

// Bytes that do not compress and that differ from version to version everywhere, so that a driver of two halves is
// told from a whole one by any comparison of contents.
std::string driverProgram(const std::string& version) {
  std::seed_seq seed(version.begin(), version.end());
  std::mt19937 random(seed);
  std::string bytes(kDriverSize, '\0');
  std::ranges::generate(bytes, [&random] { return static_cast<char>(random()); });
  return bytes;
}

std::string driverInfo(const std::string& version) {
  return propertyList(plistString("CFBundleExecutable", "Halvo") +
                      plistString("CFBundleIdentifier", "com.halvo.driver") + plistString("CFBundleName", "Halvo") +
                      plistString("CFBundlePackageType", "BNDL") + plistString("CFBundleShortVersionString", version) +
                      plistString("CFBundleVersion", version));
}

std::string brokerJob() {
  return propertyList(plistString("Label", "com.halvo.broker") +
                      plistString("Program", "/Library/PrivilegedHelperTools/halvo-broker") +
                      "\t<key>KeepAlive</key>\n\t<true/>\n\t<key>RunAtLoad</key>\n\t<true/>\n");
}

std::string agentJob() {
  return propertyList(plistString("Label", "com.halvo.daemon") +
                      plistString("Program", "/Applications/Halvo.app/Contents/MacOS/halvo-daemon") +
                      "\t<key>RunAtLoad</key>\n\t<true/>\n");
}

std::string inputFile(const std::string& path) {
  std::error_code problem;
  std::ifstream stream(path, std::ios::binary);
  // A folder opens as well, and fails only when it is read.
  if (!stream || std::filesystem::is_directory(path, problem)) {
    throw PackageProblem("\"" + path + "\" cannot be read; name a file that exists and is readable.", EX_NOINPUT);
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string packageInfo(const PackageOrder& order, std::size_t files) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<pkg-info format-version=\"2\" identifier=\"" +
         std::string(kIdentifier) + "\" version=\"" + xmlEscaped(order.version) +
         "\" install-location=\"/\" auth=\"root\">\n    <payload numberOfFiles=\"" + std::to_string(files) + "\"/>\n" +
         (order.postinstall ? "    <scripts>\n        <postinstall file=\"./postinstall\"/>\n    </scripts>\n" : "") +
         "</pkg-info>\n";
}

// The archive is cut, not its compressed form: decompressing a stream that breaks off loses more than what is missing,
// and where an installation fails would depend on how well the files compress.
std::string payload(const PackageOrder& order, const std::vector<CpioEntry>& files) {
  const std::string whole = cpioArchive(files);
  if (!order.payloadBytes) return gzipped(whole);
  if (*order.payloadBytes >= whole.size()) {
    throw PackageProblem("The payload has only " + std::to_string(whole.size()) + " bytes; cut it after fewer.",
                         EX_USAGE);
  }
  return gzipped(whole.substr(0, *order.payloadBytes));
}

}  // namespace

std::vector<CpioEntry> productFiles(const std::string& version, std::string_view brokerProgram) {
  const std::string driver = "./Library/Audio/Plug-Ins/HAL/Halvo.driver";
  return {folder("."),
          folder("./Library"),
          folder("./Library/Audio"),
          folder("./Library/Audio/Plug-Ins"),
          folder("./Library/Audio/Plug-Ins/HAL"),
          folder(driver),
          folder(driver + "/Contents"),
          text(driver + "/Contents/Info.plist", driverInfo(version)),
          folder(driver + "/Contents/MacOS"),
          program(driver + "/Contents/MacOS/Halvo", driverProgram(version)),
          folder("./Library/PrivilegedHelperTools"),
          program("./Library/PrivilegedHelperTools/halvo-broker", std::string(brokerProgram) + "\n" + version),
          folder("./Library/LaunchDaemons"),
          text("./Library/LaunchDaemons/com.halvo.broker.plist", brokerJob()),
          folder("./Library/LaunchAgents"),
          text("./Library/LaunchAgents/com.halvo.daemon.plist", agentJob())};
}

void buildPackage(const PackageOrder& order) {
  const std::vector<CpioEntry> files = productFiles(order.version, inputFile(HALVO_BROKER_PROGRAM));
  std::map<std::string, std::string> members = {{kPackageInfoMember, packageInfo(order, files.size())},
                                                {kPayloadMember, payload(order, files)},
                                                {kSignatureReportMember, inputFile(order.report)}};
  if (order.postinstall) {
    members[kScriptsMember] =
        gzippedCpio({{.path = "./postinstall", .mode = 0755, .content = inputFile(*order.postinstall)}});
  }
  try {
    FlatPackage(std::move(members)).write(order.package);
  } catch (const ArchiveError& problem) {
    throw PackageProblem("\"" + order.package + "\" cannot be written (" + problem.what() +
                             "); name a file in a folder that exists and has room.",
                         EX_CANTCREAT);
  }
}

}  // namespace halvo::sim
