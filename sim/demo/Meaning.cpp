#include "sim/demo/Meaning.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace halvo::sim {
namespace {

std::string_view launchctlWord(int status) {
  constexpr std::array<std::pair<int, std::string_view>, 8> kWords = {{{3, "no such process or service"},
                                                                       {5, "input/output error"},
                                                                       {36, "operation in progress"},
                                                                       {37, "already in progress"},
                                                                       {112, "no such domain"},
                                                                       {113, "no such service"},
                                                                       {119, "service disabled"},
                                                                       {125, "domain does not support action"}}};
  const auto* const found = std::ranges::find(kWords, status, &std::pair<int, std::string_view>::first);
  return found == kWords.end() ? std::string_view() : found->second;
}

bool refuses(const std::string& reply) {
  constexpr std::array kCodes = {"unauthorized", "downgrade", "untrusted_package", "audio_active"};
  const auto json = nlohmann::json::parse(reply, nullptr, false);
  if (json.is_boolean()) return !json.get<bool>();
  if (!json.is_object() || !json.contains("code")) return false;
  return std::ranges::any_of(kCodes, [&](const char* code) { return json["code"] == code; });
}

// What the helper says of a refusal in the system log, without what stands before each of its lines.
std::string refusalInLog(const std::string& log) {
  constexpr std::string_view kSpeaker = "halvo-helper: ";
  for (const std::string& line : splitLines(log)) {
    const std::size_t speaker = line.rfind(kSpeaker);
    if (speaker == std::string::npos) continue;
    const std::string words = line.substr(speaker + kSpeaker.size());
    if (words.starts_with("rejected ") || words.starts_with("refused ")) return words;
  }
  return {};
}

}  // namespace

std::string describe(const ToolCall& call) {
  const std::string_view word = call.tool == "/bin/launchctl" ? launchctlWord(call.status) : std::string_view();
  return call.tool + " " + joined(call.arguments, " ") + "  -> " + std::to_string(call.status) +
         (word.empty() ? "" : " (" + std::string(word) + ")");
}

std::size_t connectionOf(const Step& step, const ToolCall& call) {
  std::size_t latest = 0;
  for (std::size_t i = 0; i < step.requests.size(); ++i) {
    if (step.requests[i].began > call.began) break;
    latest = i + 1;
    if (call.began < step.requests[i].ended) break;
  }
  return latest;
}

std::optional<std::string> refusalReason(const Request& request) {
  const std::string logged = refusalInLog(request.log);
  if (!refuses(request.reply) && (!request.reply.empty() || logged.empty())) return std::nullopt;
  std::string reason = joined(splitLines(request.explanation), " ");
  if (!logged.empty()) reason += (reason.empty() ? "" : " ") + std::string("The helper's log: ") + logged;
  return reason;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string line;
  for (const std::string& word : words) {
    if (&word != &words.front()) line += separator;
    line += word;
  }
  return line;
}

}  // namespace halvo::sim
