#include "sim/transport/WireFormat.h"

#include <utf8.h>

#include <algorithm>
#include <iterator>

namespace halvo::sim {
namespace {

const char* signatureOf(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::data:
      return "ay";
    case ArgumentKind::text:
      return "s";
    case ArgumentKind::boolean:
      return "b";
  }
  return "";
}

const char* signatureOf(ReplyKind kind) {
  switch (kind) {
    case ReplyKind::none:
      return "";
    case ReplyKind::text:
      return "s";
    case ReplyKind::boolean:
      return "b";
  }
  return "";
}

WireMessage wireMessage(const HalvoHelperMessage& message) {
  WireMessage wire{.member = std::string(message.selector),
                   .signature = {},
                   .result = signatureOf(message.reply),
                   .argumentNames = {}};
  std::replace(wire.member.begin(), wire.member.end(), ':', '_');
  for (const MessageArgument& argument : message.arguments()) {
    wire.signature += signatureOf(argument.kind);
    wire.argumentNames.append(argument.name).push_back('\0');
  }
  if (message.reply != ReplyKind::none) wire.argumentNames.append("reply").push_back('\0');
  return wire;
}

}  // namespace

const std::array<WireMessage, kHalvoHelperMessages.size()>& wireMessages() {
  static const auto messages = [] {
    std::array<WireMessage, kHalvoHelperMessages.size()> all;
    std::transform(kHalvoHelperMessages.begin(), kHalvoHelperMessages.end(), all.begin(), wireMessage);
    return all;
  }();
  return messages;
}

std::string sendableText(std::string_view text) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::string wellFormed;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(wellFormed), kReplacement);
  std::string sendable;
  for (const char byte : wellFormed) {
    if (byte == '\0') {
      utf8::append(kReplacement, std::back_inserter(sendable));
    } else {
      sendable.push_back(byte);
    }
  }
  return sendable;
}

}  // namespace halvo::sim
