// Says in words what a reply means and what to do next.
#pragma once

#include <string>

#include "client/CommandLine.h"
#include "client/ExitStatus.h"
#include "platform/service/ServiceClient.h"

namespace halvo {

struct Explanation {
  ExitStatus status;
  std::string text;  // for people; empty when there is nothing to explain
  bool operator==(const Explanation&) const = default;
};

// A reply that is a JSON text. The outcome is its first member, which the helper always writes itself: later members
// may hold text that came from a manifest.
[[nodiscard]] Explanation explainTextReply(const std::string& reply);

// A reply to remove-bundle or finalize, or to a legacy form of them.
[[nodiscard]] Explanation explainBoolReply(const CommandLine& command, bool succeeded);

[[nodiscard]] Explanation explainFailure(const ServiceFailure& failure);

}  // namespace halvo
