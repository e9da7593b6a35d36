// Carries out what the command line asks for.
#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>

#include "client/CommandLine.h"
#include "client/Conversation.h"
#include "client/ExitStatus.h"
#include "client/Explanations.h"
#include "client/LocalView.h"
#include "client/PrivateCopy.h"
#include "client/ProtectedFolders.h"
#include "client/Registration.h"

namespace halvo {

// What a command reads and writes besides the helper's messages.
struct Surroundings {
  std::ostream& out;                                                     // the helper's reply, as it came
  std::ostream& err;                                                     // everything meant for people
  std::function<std::string(const CommandLine&)> logOf = progressLogOf;  // the log to show while a request runs
  LocalView view = LocalView();                                          // of the Mac that this program runs on
  bool errIsTerminal = false;                                            // there the time that passes is shown
  std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
  RegistrationService registration = {};  // the system's
  // Where a package is copied that the helper may not read where it lies, and whether it does lie in such a place.
  std::function<std::string()> temporaryFolder = userTemporaryFolder;
  std::function<bool(const std::string&)> isKeptFromHelper = liesWhereDaemonsMayNotRead;
};

// Blocks until the reply. Whether the reply could be written, the stream itself knows.
ExitStatus runCommand(const CommandLine& command, Conversation& conversation, const Surroundings& surroundings);

}  // namespace halvo
