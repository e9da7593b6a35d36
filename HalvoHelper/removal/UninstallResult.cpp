#include "HalvoHelper/removal/UninstallResult.h"

#include "HalvoHelper/text/Overloaded.h"

namespace halvo {

std::string halvoUninstallResultJSON(const UninstallResult& result) {
  return std::visit(
      Overloaded{
          [](const UninstallOk& r) { return "{\"code\":\"ok\",\"gui_app_path\":\"" + r.guiAppPath + "\"}"; },
          [](const UninstallIncomplete& r) { return "{\"code\":\"incomplete\",\"log_path\":\"" + r.logPath + "\"}"; },
          [](const UninstallAudioActive&) { return std::string("{\"code\":\"audio_active\"}"); },
      },
      result);
}

}  // namespace halvo
