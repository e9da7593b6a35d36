#include "sim/transport/MessageArguments.h"

#include "sim/transport/WireFormat.h"

namespace halvo::sim {
namespace {

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
