#include "sim/demo/TimeLine.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

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

using JSON = nlohmann::ordered_json;

JSON nameEvent(const char* what, int process, int thread, const std::string& name) {
  return {{"name", what}, {"ph", "M"}, {"pid", process}, {"tid", thread}, {"args", {{"name", name}}}};
}

JSON markEvent(const Mark& mark, int process, int thread, Moment start) {
  return {{"name", mark.text},
          {"cat", nameOf(mark.kind)},
          {"ph", "X"},
          {"ts", mark.began - start},
          {"dur", mark.ended - mark.began},
          {"pid", process},
          {"tid", thread}};
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

std::string traceJSON(const std::vector<Step>& steps) {
  JSON events = JSON::array();
  std::vector<std::pair<const Step*, std::vector<Track>>> lines;
  for (const Step& step : steps) lines.emplace_back(&step, timeLine(step));
  std::erase_if(lines, [](const auto& line) { return line.second.empty(); });
  const Moment start = lines.empty() ? 0 : spanOf(lines.front().second).began;
  for (const auto& [step, tracks] : lines) {
    events.push_back(nameEvent("process_name", step->number, 0, std::to_string(step->number) + ". " + step->title));
    int thread = 0;
    for (const Track& track : tracks) {
      events.push_back(nameEvent("thread_name", step->number, ++thread, track.name));
      for (const Mark& mark : track.marks) events.push_back(markEvent(mark, step->number, thread, start));
    }
  }
  const JSON trace = {{"displayTimeUnit", "ms"}, {"traceEvents", events}};
  return trace.dump(1, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace halvo::sim
