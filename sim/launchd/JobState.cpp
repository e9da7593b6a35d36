#include "sim/launchd/JobState.h"

#include <nlohmann/json.hpp>

namespace halvo::sim {
namespace {

using Json = nlohmann::ordered_json;

template <typename T>
Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

template <typename T>
std::optional<T> optionally(const Json& value) {
  if (value.is_null()) return std::nullopt;
  return value.get<T>();
}

JobState fromJSON(const Json& entry) {
  return {.domain = entry.at("domain").get<std::string>(),
          .label = entry.at("label").get<std::string>(),
          .program = entry.at("program").get<std::string>(),
          .pid = optionally<pid_t>(entry.at("pid")),
          .starts = entry.at("starts").get<int>(),
          .lastExitStatus = optionally<int>(entry.at("last_exit_status"))};
}

}  // namespace

std::string jobStatesToJSON(const std::vector<JobState>& jobs) {
  Json list = Json::array();
  for (const JobState& job : jobs) {
    list.push_back({{"domain", job.domain},
                    {"label", job.label},
                    {"program", job.program},
                    {"pid", orNull(job.pid)},
                    {"starts", job.starts},
                    {"last_exit_status", orNull(job.lastExitStatus)}});
  }
  return list.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<std::vector<JobState>> jobStatesFromJSON(std::string_view text) try {
  std::vector<JobState> jobs;
  const Json list = Json::parse(text);
  if (!list.is_array()) return std::nullopt;
  for (const Json& entry : list) jobs.push_back(fromJSON(entry));
  return jobs;
} catch (const Json::exception&) {
  return std::nullopt;
}

}  // namespace halvo::sim
