// The program but for its process.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "client/Commands.h"
#include "client/Conversation.h"
#include "client/ExitStatus.h"

namespace halvo {

// Does what the words behind "halvo-app" ask for. Connects for a request only. What succeeded, but could not be printed
// to the end, has a status of its own.
ExitStatus runProgram(const std::vector<std::string>& arguments, const std::function<Conversation()>& connect,
                      const Surroundings& surroundings);

}  // namespace halvo
