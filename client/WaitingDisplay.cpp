#include "client/WaitingDisplay.h"

#include <utility>

#include "client/Explanations.h"
#include "client/Message.h"

namespace halvo {

WaitingDisplay::WaitingDisplay(const CommandLine& command, const Surroundings& surroundings)
    : command_(command), surroundings_(surroundings), begun_(surroundings.now()), log_(surroundings.logOf(command)) {}

WaitingDisplay::~WaitingDisplay() { eraseTime(); }

void WaitingDisplay::look() {
  if (!std::exchange(saidSo_, true)) say(surroundings_.err, waitingNotice(command_));
  eraseTime();
  log_.printNewLines(surroundings_.err);
  showTime();
}

void WaitingDisplay::eraseTime() {
  // To the first column, and everything from there on away.
  if (std::exchange(showsTime_, false)) surroundings_.err << "\r\x1B[K" << std::flush;
}

void WaitingDisplay::showTime() {
  if (!surroundings_.errIsTerminal) return;
  const auto passed = std::chrono::duration_cast<std::chrono::seconds>(surroundings_.now() - begun_);
  surroundings_.err << "halvo-app: waiting for " << passed.count() << " s" << std::flush;
  showsTime_ = true;
}

}  // namespace halvo
