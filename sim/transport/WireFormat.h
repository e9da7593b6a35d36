// How the protocol looks on the wire: D-Bus messages, derived from the message table and from nothing else.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "HalvoHelperXPC/MessageTable.h"

namespace halvo::sim {

inline constexpr const char* kHelperObject = "/com/halvo/helper";
inline constexpr const char* kHelperInterface = "com.halvo.HalvoHelperProtocol";

struct WireMessage {
  std::string member;         // the selector with "_" for ":"
  std::string signature;      // of the arguments
  std::string result;         // of the reply, empty for none
  std::string argumentNames;  // of arguments and result, each ended by a NUL
};

// In the order of the message table. Lives as long as the process.
const std::array<WireMessage, kHalvoHelperMessages.size()>& wireMessages();

// The text as the wire carries it, which is well-formed UTF-8 without NULs: what is neither becomes U+FFFD.
std::string sendableText(std::string_view text);

}  // namespace halvo::sim
