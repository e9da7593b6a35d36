#include "sim/frameworks/testing/FrameworkProbe.h"

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <utility>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/frameworks/testing/Instrumentation.h"

namespace halvo::sim {
namespace {

struct Script {
  std::mutex mutex;
  // All of the following is guarded by the mutex.
  std::vector<std::string> calls;
  std::map<std::string, std::deque<ScriptedAnswer>, std::less<>> answers;
  std::map<std::string, std::size_t, std::less<>> deviceLimits;  // by function
};

// Never destroyed: framework calls may come from threads that outlive main().
Script& script() {
  static Script& instance = *new Script;
  return instance;
}

void clear() {
  const std::lock_guard lock(script().mutex);
  script().calls.clear();
  script().answers.clear();
  script().deviceLimits.clear();
}

void addAnswer(std::string_view function, ScriptedAnswer answer) {
  const std::lock_guard lock(script().mutex);
  script().answers[std::string(function)].push_back(answer);
}

void limitDevices(std::string_view function, std::size_t count) {
  const std::lock_guard lock(script().mutex);
  script().deviceLimits[std::string(function)] = count;
}

}  // namespace

namespace probe {

std::optional<ScriptedAnswer> takeAnswer(std::string_view function) {
  const std::lock_guard lock(script().mutex);
  const auto found = script().answers.find(function);
  if (found == script().answers.end() || found->second.empty()) return std::nullopt;
  const ScriptedAnswer answer = found->second.front();
  found->second.pop_front();
  return answer;
}

void record(std::string call) {
  const std::lock_guard lock(script().mutex);
  script().calls.push_back(std::move(call));
}

std::size_t limitedDevices(std::string_view function, std::size_t count) {
  if (!probed()) return count;
  const std::lock_guard lock(script().mutex);
  const auto limit = script().deviceLimits.extract(std::string(function));
  return limit ? std::min(count, limit.mapped()) : count;
}

}  // namespace probe

std::string hexText(const void* bytes, std::size_t size) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned byte = static_cast<const unsigned char*>(bytes)[i];
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

std::string quotedText(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

FrameworkProbe::FrameworkProbe() {
  clear();
  probe::listening.store(true, std::memory_order_release);
}

FrameworkProbe::~FrameworkProbe() {
  probe::listening.store(false, std::memory_order_release);
  clear();
}

std::vector<std::string> FrameworkProbe::calls() const {
  const std::lock_guard lock(script().mutex);
  return script().calls;
}

void FrameworkProbe::failNext(std::string_view function, std::int32_t status) {
  addAnswer(function, {.status = status});
}

void FrameworkProbe::failNextWithResult(std::string_view function, std::int32_t status) {
  addAnswer(function, {.status = status, .actsFirst = true});
}

void FrameworkProbe::nullNext(std::string_view function) { addAnswer(function, {.nullResult = true}); }

void FrameworkProbe::returnNextRight(CFDictionaryRef definition) {
  addAnswer("AuthorizationRightGet", {.object = definition});
}

void FrameworkProbe::shrinkDeviceList(std::size_t count) { limitDevices("AudioObjectGetPropertyData", count); }

void FrameworkProbe::growDeviceList(std::size_t count) { limitDevices("AudioObjectGetPropertyDataSize", count); }

std::int64_t FrameworkProbe::liveObjects() { return countLiving(); }

}  // namespace halvo::sim
