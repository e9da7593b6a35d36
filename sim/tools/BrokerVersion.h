// The version of a broker program: text behind the end of the executable, so that one build of the program makes
// brokers of any version, each with bytes of its own.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

// The program with the version behind it. It runs as before.
std::string withBrokerVersion(std::string_view program, std::string_view version);

// The version behind a program; nothing when it carries none.
std::optional<std::string> brokerVersion(std::string_view program);

}  // namespace halvo::sim
