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

int readData(sd_bus_message* call, AuthorizationBlob& data) {
  const void* first = nullptr;
  std::size_t size = 0;
  const int status = sd_bus_message_read_array(call, 'y', &first, &size);
  const auto* const bytes = static_cast<const std::byte*>(first);
  if (status >= 0) data.assign(bytes, bytes + size);
  return status;
}

int readText(sd_bus_message* call, std::string& text) {
  const char* value = nullptr;
  const int status = sd_bus_message_read_basic(call, 's', static_cast<void*>(&value));
  if (status >= 0) text = value;
  return status;
}

int readBoolean(sd_bus_message* call, bool& boolean) {
  int value = 0;
  const int status = sd_bus_message_read_basic(call, 'b', &value);
  boolean = value != 0;
  return status;
}

int appendBoolean(sd_bus_message* call, bool boolean) {
  const int value = boolean ? 1 : 0;
  return sd_bus_message_append_basic(call, 'b', &value);
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
  std::string sendable;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(sendable), kReplacement);
  for (std::size_t at = 0; (at = sendable.find('\0', at)) != std::string::npos;) sendable.replace(at, 1, "\uFFFD");
  return sendable;
}

int readArguments(sd_bus_message* call, const HalvoHelperMessage& message, MessageArguments& arguments) {
  auto text = arguments.texts.begin();
  for (const MessageArgument& argument : message.arguments()) {
    int status = 0;
    switch (argument.kind) {
      case ArgumentKind::data:
        status = readData(call, arguments.authorization);
        break;
      case ArgumentKind::text:
        status = readText(call, *text++);
        break;
      case ArgumentKind::boolean:
        status = readBoolean(call, arguments.acceptAudioInterruption);
        break;
    }
    if (status < 0) return status;
  }
  return 0;
}

int appendArguments(sd_bus_message* call, const HalvoHelperMessage& message, const MessageArguments& arguments) {
  auto text = arguments.texts.begin();
  for (const MessageArgument& argument : message.arguments()) {
    int status = 0;
    switch (argument.kind) {
      case ArgumentKind::data:
        status = sd_bus_message_append_array(call, 'y', arguments.authorization.data(), arguments.authorization.size());
        break;
      case ArgumentKind::text:
        status = sd_bus_message_append_basic(call, 's', sendableText(*text++).c_str());
        break;
      case ArgumentKind::boolean:
        status = appendBoolean(call, arguments.acceptAudioInterruption);
        break;
    }
    if (status < 0) return status;
  }
  return 0;
}

void callHandler(HalvoHelperProtocol& handler, MessageId id, const MessageArguments& arguments, const TextReply& text,
                 const BoolReply& boolean) {
  const auto& [authorization, texts, acceptAudio] = arguments;
  switch (id) {
    case MessageId::ping:
      return handler.ping(text);
    case MessageId::enumerateActiveGuiDomains:
      return handler.enumerateActiveGuiDomains(text);
    case MessageId::prepareForRemovalUnauthorized:
      return handler.prepareForRemoval(acceptAudio, text);
    case MessageId::removeAppBundleUnauthorized:
      return handler.removeAppBundle(texts[0], boolean);
    case MessageId::finalizeRemovalUnauthorized:
      return handler.finalizeRemoval();
    case MessageId::installSystemPkgUnauthorized:
      return handler.installSystemPkg(texts[0], texts[1], acceptAudio, text);
    case MessageId::prepareForRemoval:
      return handler.prepareForRemoval(authorization, acceptAudio, text);
    case MessageId::removeAppBundle:
      return handler.removeAppBundle(authorization, texts[0], boolean);
    case MessageId::finalizeRemoval:
      return handler.finalizeRemoval(authorization, boolean);
    case MessageId::installSystemPkg:
      return handler.installSystemPkg(authorization, texts[0], texts[1], acceptAudio, text);
  }
}

}  // namespace halvo::sim
