#include "HalvoHelper/install/InstallResult.h"

#include "HalvoHelper/text/Overloaded.h"

namespace halvo {
namespace {

std::string quotedList(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    if (!list.empty()) list += ",";
    list += "\"" + name + "\"";
  }
  return list;
}

}  // namespace

std::string halvoInstallResultJSON(const InstallResult& result) {
  return std::visit(
      Overloaded{
          [](const InstallDowngrade& r) {
            return "{\"code\":\"downgrade\",\"installed\":\"" + r.installed + "\",\"incoming\":\"" + r.incoming + "\"}";
          },
          [](const InstallOk& r) { return "{\"code\":\"ok\",\"changed\":[" + quotedList(r.changed) + "]}"; },
          [](const InstallFailed& r) { return "{\"code\":\"install_failed\",\"log_path\":\"" + r.logPath + "\"}"; },
          [](const InstallRolledBack& r) { return "{\"code\":\"rolled_back\",\"log_path\":\"" + r.logPath + "\"}"; },
          [](const InstallUntrustedPackage& r) {
            return "{\"code\":\"untrusted_package\",\"reason\":\"" + std::string(halvoRawValue(r.reason)) + "\"}";
          },
          [](const InstallAudioActive&) { return std::string("{\"code\":\"audio_active\"}"); },
      },
      result);
}

}  // namespace halvo
