#include "sim/platform/service/WireFormat.h"

#include <algorithm>
#include <cstdint>

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

// How many bytes the well-formed, non-NUL character at the front of `text` has; 0 when there is none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return lead == 0 ? 0 : 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
  }
  // Neither longer than needed, nor a surrogate, nor beyond U+10FFFF.
  const bool wrong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
                     (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F);
  return wrong ? 0 : length;
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
  std::string sendable;
  sendable.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    sendable.append(length == 0 ? std::string_view("\uFFFD") : text.substr(0, length));
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return sendable;
}

}  // namespace halvo::sim
