// Uses every installed header of HalvoHelperXPC the way an application does, and prints what it found.
#include <HalvoHelperXPC/Constants.h>
#include <HalvoHelperXPC/HalvoHelperProtocol.h>
#include <HalvoHelperXPC/MessageTable.h>
#include <HalvoHelperXPC/ReplyParsers.h>
#include <HalvoHelperXPC/Version.h>

#include <iostream>
#include <type_traits>

static_assert(std::is_abstract_v<halvo::HalvoHelperProtocol>);

int main() {
  const auto version = halvo::halvoParseHelperVersion(R"({"ok":true,"helper_version":6,"build_abi":1})");
  std::cout << "build " << halvo::kHalvoVersion << "\n"
            << "service " << halvo::kHalvoHelperMachService << "\n"
            << "messages " << halvo::kHalvoHelperMessages.size() << "\n"
            << "helper " << version.value_or(0) << "\n"
            << "refused " << halvo::halvoIsUnauthorizedReply(std::string(halvo::kHalvoUnauthorizedReplyJSON)) << "\n";
}
