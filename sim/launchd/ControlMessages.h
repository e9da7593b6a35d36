// What travels over launchd's control socket: one request and one reply per connection, each a line of JSON.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/launchd/ControlClient.h"

namespace halvo::sim {

struct ControlRequest {
  std::string verb;  // bootstrap, bootout, print, killall, register, unregister or run
  std::vector<std::string> arguments;
  bool operator==(const ControlRequest&) const = default;
};

// With "run" come the descriptors of the command's standard streams.
inline constexpr std::size_t kCommandStreams = 3;

// Longer ones are refused.
inline constexpr std::size_t kMaxControlMessage = 64UL * 1024;

std::string toLine(const ControlRequest& request);
std::string toLine(const ControlReply& reply);
std::optional<ControlRequest> requestFromLine(std::string_view line);
std::optional<ControlReply> replyFromLine(std::string_view line);

}  // namespace halvo::sim
