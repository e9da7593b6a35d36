#include "main/AdminRightSetUp.h"

#include <string>

#include "HalvoHelperXPC/Constants.h"
#include "platform/SystemLog.h"

namespace halvo {

bool halvoSetUpAdminRight(const AdminRightAccess& access) {
  const std::int32_t status = access.write();
  const auto definition = access.read();
  const bool sound = definition && halvoAdminRightIsSound(*definition);
  halvoSystemLog("halvo-helper: admin right " + std::string(kHalvoAdminRight) +
                 " registered status=" + std::to_string(status) + " sound=" + (sound ? "1" : "0"));
  return sound;
}

}  // namespace halvo
