#include "sim/tools/ProductFiles.h"

#include <cstdint>

#include "sim/tools/BrokerVersion.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

using Kind = CpioEntry::Kind;

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
std::string driverProgram(std::string_view version) {
  std::uint64_t state = 0xcbf29ce484222325;
  for (const char character : version) state = (state ^ static_cast<unsigned char>(character)) * 0x100000001b3;
  std::string bytes;
  bytes.reserve(kDriverSize);
  while (bytes.size() < kDriverSize) {
    state = state * 6364136223846793005 + 1442695040888963407;
    bytes += static_cast<char>(state >> 56);
  }
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
          program("./Library/PrivilegedHelperTools/halvo-broker", withBrokerVersion(brokerProgram, version)),
          folder("./Library/LaunchDaemons"),
          text("./Library/LaunchDaemons/com.halvo.broker.plist", brokerJob()),
          folder("./Library/LaunchAgents"),
          text("./Library/LaunchAgents/com.halvo.daemon.plist", agentJob())};
}

}  // namespace halvo::sim
