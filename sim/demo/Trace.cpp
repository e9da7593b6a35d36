#include "sim/demo/Trace.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "sim/demo/TimeLine.h"

namespace halvo::sim {
namespace {

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
