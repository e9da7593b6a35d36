#include "sim/demo/TimeLine.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "sim/demo/Meaning.h"

namespace halvo::sim {
namespace {

std::string answer(const Request& request) {
  return request.command + "  -> " + (request.reply.empty() ? "no reply" : request.reply);
}

// What is drawn for one connection, during and after its request; number 0 stands for none.
std::vector<Track> tracksOf(const Step& step, std::size_t connection) {
  const Request* request = connection == 0 ? nullptr : &step.requests[connection - 1];
  Track during{.name = request == nullptr ? "No connection" : "Connection " + std::to_string(connection), .marks = {}};
  Track afterwards{.name = during.name + ", after the answer", .marks = {}};
  if (request != nullptr) {
    during.marks.push_back({Mark::Kind::request, answer(*request), request->began, request->ended});
  }
  for (const Wait& wait : step.waits) {
    if (wait.connection != connection) continue;
    during.marks.push_back({Mark::Kind::wait, "Waits: " + wait.reason, wait.began, wait.ended});
  }
  for (const ToolCall& call : step.tools) {
    if (connectionOf(step, call) != connection) continue;
    const bool inTime = request == nullptr || call.ended <= request->ended;
    (inTime ? during : afterwards).marks.push_back({Mark::Kind::tool, describe(call), call.began, call.ended});
  }
  return {std::move(during), std::move(afterwards)};
}

}  // namespace

std::vector<Track> timeLine(const Step& step) {
  std::vector<Track> list;
  for (std::size_t i = 0; i <= step.requests.size(); ++i) {
    // What belongs to no connection, number 0, comes last.
    std::ranges::move(tracksOf(step, (i + 1) % (step.requests.size() + 1)), std::back_inserter(list));
  }
  std::erase_if(list, [](const Track& track) { return track.marks.empty(); });
  return list;
}

Span spanOf(const std::vector<Track>& tracks) {
  Span span{std::numeric_limits<Moment>::max(), std::numeric_limits<Moment>::min()};
  for (const Track& track : tracks) {
    for (const Mark& mark : track.marks) {
      span.began = std::min(span.began, mark.began);
      span.ended = std::max(span.ended, mark.ended);
    }
  }
  return tracks.empty() ? Span{0, 0} : span;
}

std::string nameOf(Mark::Kind kind) {
  constexpr std::array kNames = {"request", "tool", "wait"};
  return kNames.at(static_cast<std::size_t>(kind));
}

}  // namespace halvo::sim
