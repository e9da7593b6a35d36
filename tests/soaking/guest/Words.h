// How the verbs of the program inside the machine ask the helper, and read what they were given.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "client/Conversation.h"

namespace halvo::soak {

// A conversation with the helper, as the application has it.
Conversation converse();

// One ping, repeated as the application does. The reply, or nothing with the failure in `why`.
bool answersPing(Conversation& conversation, std::string& why);

// What came of a request, for people.
std::string describe(const Outcome& outcome);

std::string hexOf(const AuthorizationBlob& form);
AuthorizationBlob formOf(std::string_view hex);

// Blocks until the file is there.
void waitForFile(const std::string& path);
bool isThere(const std::string& path);

using Clock = std::chrono::steady_clock;
std::int64_t millisecondsSince(Clock::time_point begin);

}  // namespace halvo::soak
