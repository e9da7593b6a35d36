#include "fuzz/support/JSONOracle.h"

#include <utility>

namespace halvo::fuzz {
namespace {

using Json = nlohmann::json;

constexpr int kDeepest = 512;

// The reader calls back with the depth of the container that begins, the outermost one having 0.
std::optional<Json> objectIn(std::string_view text) {
  bool isTooDeep = false;
  const auto watchDepth = [&](int depth, Json::parse_event_t event, const Json&) {
    const bool begins = event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
    if (begins && depth >= kDeepest) isTooDeep = true;
    return true;
  };
  Json whole = Json::parse(text, watchDepth, false);
  if (isTooDeep || !whole.is_object()) return std::nullopt;
  return whole;
}

}  // namespace

std::optional<Json> memberOfObject(std::string_view text, const std::string& key) {
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  const auto object = objectIn(text);
  if (!object || !object->contains(key)) return std::nullopt;
  return object->at(key);
}

std::optional<std::string> asText(const std::optional<Json>& value) {
  if (!value || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

bool isWholeNumberOf(const std::optional<Json>& value, std::optional<std::int64_t> read) {
  if (!value || !value->is_number()) return !read;
  if (value->is_number_float()) return !read || static_cast<double>(*read) == value->get<double>();
  if (value->is_number_unsigned() && !std::in_range<std::int64_t>(value->get<std::uint64_t>())) return !read;
  return read == value->get<std::int64_t>();
}

std::string asJSON(const std::string& text) { return Json(text).dump(); }

}  // namespace halvo::fuzz
