#include "tests/soaking/guest/Words.h"

#include <unistd.h>

#include <charconv>
#include <thread>

#include "HalvoHelperXPC/Constants.h"

namespace halvo::soak {

Conversation converse() {
  return Conversation([] { return ServiceClient::forMachService(std::string(kHalvoHelperMachService)); });
}

bool answersPing(Conversation& conversation, std::string& why) {
  const Outcome outcome =
      conversation.askRepeatably([](auto& helper, const TextReply& text, const BoolReply&) { helper.ping(text); });
  const auto* reply = std::get_if<std::string>(&outcome);
  if (reply != nullptr && reply->starts_with("{\"ok\":true,")) return true;
  why = describe(outcome);
  return false;
}

std::string describe(const Outcome& outcome) {
  if (const auto* text = std::get_if<std::string>(&outcome)) return *text;
  if (const auto* flag = std::get_if<bool>(&outcome)) return *flag ? "true" : "false";
  if (const auto* failure = std::get_if<ServiceFailure>(&outcome)) return "no reply: " + failure->description;
  return "sent";
}

std::string hexOf(const AuthorizationBlob& form) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::byte byte : form) {
    text += kDigits[std::to_integer<std::size_t>(byte >> 4U)];
    text += kDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
  }
  return text;
}

AuthorizationBlob formOf(std::string_view hex) {
  AuthorizationBlob form;
  for (; hex.size() >= 2; hex.remove_prefix(2)) {
    unsigned value = 0;
    std::from_chars(hex.data(), hex.data() + 2, value, 16);
    form.push_back(static_cast<std::byte>(value));
  }
  return form;
}

bool isThere(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

void waitForFile(const std::string& path) {
  while (!isThere(path)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

std::int64_t millisecondsSince(Clock::time_point begin) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

}  // namespace halvo::soak
