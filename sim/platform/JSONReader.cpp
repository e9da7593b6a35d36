#include <exception>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/JSONNumber.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

using Json = nlohmann::json;

// Receives the parts of the text in order and keeps the members of the outermost object. False ends the reading. The
// reader underneath keeps its own stack on the heap, so depth costs no call stack.
class TopLevelMembers final : public nlohmann::json_sax<Json> {
 public:
  JSONObject take() { return std::move(members_); }

  bool null() override { return member(JSONOther{}); }
  bool boolean(bool value) override { return member(value); }
  bool number_integer(number_integer_t value) override { return member(value); }
  bool number_unsigned(number_unsigned_t value) override {
    return std::in_range<std::int64_t>(value) ? member(static_cast<std::int64_t>(value)) : member(JSONOther{});
  }
  // Also for what looks like an integer and fits into none.
  bool number_float(number_float_t /*value*/, const string_t& text) override {
    const auto integer = wholeJSONNumber(text);
    return integer ? member(*integer) : member(JSONOther{});
  }
  bool string(string_t& value) override { return member(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }

  bool start_object(std::size_t /*count*/) override { return enter(true); }
  bool start_array(std::size_t /*count*/) override { return enter(false); }
  bool end_object() override { return leave(); }
  bool end_array() override { return leave(); }
  bool key(string_t& name) override {
    if (depth_ == 1) key_ = std::move(name);
    return true;
  }

  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

 private:
  static constexpr int kDeepest = 512;

  bool member(JSONValue value) {
    if (depth_ == 0) return false;
    if (depth_ == 1) members_.insert_or_assign(key_, std::move(value));
    return true;
  }

  bool enter(bool isObject) {
    if (depth_ == 0 && !isObject) return false;
    if (depth_ == 1) members_.insert_or_assign(key_, JSONOther{});
    return ++depth_ <= kDeepest;
  }

  bool leave() {
    --depth_;
    return true;
  }

  JSONObject members_;
  std::string key_;
  int depth_ = 0;
};

}  // namespace

std::optional<JSONObject> halvoReadJSONObject(std::string_view text) {
  // The reader would take a NUL for the end of the text and not look at what follows.
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  try {
    TopLevelMembers members;
    if (!Json::sax_parse(text.begin(), text.end(), &members)) return std::nullopt;
    return members.take();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace halvo
