// Says in words what a reply means and what to do next.
#pragma once

#include <cstdint>
#include <string>

#include "client/CommandLine.h"
#include "client/ExitStatus.h"
#include "client/LocalView.h"
#include "transport/ServiceClient.h"

namespace halvo {

struct Explanation {
  ExitStatus status;
  std::string text;  // for people; empty when there is nothing to explain
  bool operator==(const Explanation&) const = default;
};

// A reply that is a JSON text. The outcome is its first member, which the helper always writes itself: later members
// may hold text that came from a manifest.
[[nodiscard]] Explanation explainTextReply(const CommandLine& command, const std::string& reply, const Seen& seen = {});

// A reply to remove-bundle or finalize, or to a legacy form of them.
[[nodiscard]] Explanation explainBoolReply(const CommandLine& command, bool succeeded, const Seen& seen = {});

// The one request that has no reply, finalize of the first generation, has arrived.
[[nodiscard]] Explanation explainNoReply(const CommandLine& command);

// A change that was cut off may have been done, in part or not at all: the text says where to look.
[[nodiscard]] Explanation explainFailure(const CommandLine& command, const ServiceFailure& failure);

// No reply came in the time that the command line gives.
[[nodiscard]] Explanation explainTimeOut(const CommandLine& command);

// An uninstall ends with this step, which did not succeed: the sentence says what stays.
[[nodiscard]] std::string explainEndOfUninstall(const CommandLine& step);

[[nodiscard]] Explanation explainOldHelper();

// There is no administrator's approval to send; the status is that of Authorization Services.
[[nodiscard]] Explanation explainMissingApproval(std::int32_t status, const Seen& seen = {});

// Which log the request writes its progress to; empty when it writes none.
[[nodiscard]] std::string progressLogOf(const CommandLine& command);

// Said when a request takes longer than a person expects.
[[nodiscard]] std::string waitingNotice(const CommandLine& command);

}  // namespace halvo
