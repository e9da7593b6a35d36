// What the data of a step mean to a person.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

// The run as a line: its command, its exit status, and a word on what that status of that tool means, where it has one.
std::string describe(const ToolCall& call);

// The connection that had the tool run, counted from 1; 0 when the step has no request. The helper makes one change at
// a time, in the order in which it was asked: what runs belongs to the oldest request without an answer. What runs when
// all are answered was put off by the last one.
std::size_t connectionOf(const Step& step, const ToolCall& call);

// Why the helper turned the request down; nothing when it did not. A change that was begun and failed is no refusal.
std::optional<std::string> refusalReason(const Request& request);

std::string joined(const std::vector<std::string>& words, std::string_view separator);

}  // namespace halvo::sim
