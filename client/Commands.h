// Carries out what the command line asks for.
#pragma once

#include <ostream>

#include "client/CommandLine.h"
#include "client/Conversation.h"
#include "client/ExitStatus.h"

namespace halvo {

// Prints the helper's reply to `out` as it came, and everything meant for people to `err`. Blocks until the reply.
ExitStatus runCommand(const CommandLine& command, Conversation& conversation, std::ostream& out, std::ostream& err);

}  // namespace halvo
