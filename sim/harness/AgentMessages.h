// What the harness and its agent inside the machine say to each other: one JSON object a line.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// The agent's first line.
struct AgentGreeting {
  bool severalUsers = false;
  bool operator==(const AgentGreeting&) const = default;
};

struct AgentRequest {
  std::int64_t id = 0;
  uid_t user = 0;
  std::vector<std::string> argv;
  std::string input;
  bool operator==(const AgentRequest&) const = default;
};

struct AgentReply {
  std::int64_t id = 0;
  int status = 0;
  std::string out;
  std::string err;
  bool operator==(const AgentReply&) const = default;
};

// Bytes that are not UTF-8 become U+FFFD.
std::string toLine(const AgentGreeting& greeting);
std::string toLine(const AgentRequest& request);
std::string toLine(const AgentReply& reply);
std::optional<AgentGreeting> greetingFromLine(std::string_view line);
std::optional<AgentRequest> agentRequestFromLine(std::string_view line);
std::optional<AgentReply> agentReplyFromLine(std::string_view line);

}  // namespace halvo::sim
