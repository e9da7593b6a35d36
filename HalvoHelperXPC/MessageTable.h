// The protocol as data: one row per message, from which every transport is built and against which the declaration
// that the Mac's compiler emits is checked.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace halvo {

enum class ArgumentKind { data, text, boolean };
enum class ReplyKind { none, text, boolean };

struct MessageArgument {
  std::string_view name;
  ArgumentKind kind;
};

// The messages in the order of the protocol; the value is the row's index in the table.
enum class MessageId : std::size_t {
  ping,
  enumerateActiveGuiDomains,
  prepareForRemovalUnauthorized,
  removeAppBundleUnauthorized,
  finalizeRemovalUnauthorized,
  installSystemPkgUnauthorized,
  prepareForRemoval,
  removeAppBundle,
  finalizeRemoval,
  installSystemPkg,
};

struct HalvoHelperMessage {
  MessageId id;
  std::string_view selector;
  std::array<MessageArgument, 4> argumentSlots;  // the first `argumentCount` are in use
  std::size_t argumentCount;
  ReplyKind reply;
  std::string_view typeEncoding;  // what the protocol's run-time metadata carries on both processors

  constexpr std::span<const MessageArgument> arguments() const { return {argumentSlots.data(), argumentCount}; }
};

inline constexpr MessageArgument kAuthorizationArgument{"authorization", ArgumentKind::data};
inline constexpr MessageArgument kAcceptAudioArgument{"acceptAudioInterruption", ArgumentKind::boolean};
inline constexpr MessageArgument kPathArgument{"path", ArgumentKind::text};
inline constexpr MessageArgument kPkgPathArgument{"pkgPath", ArgumentKind::text};
inline constexpr MessageArgument kManifestArgument{"manifestJSON", ArgumentKind::text};

inline constexpr std::array<HalvoHelperMessage, 10> kHalvoHelperMessages = {{
    {MessageId::ping, "pingWithReply:", {}, 0, ReplyKind::text, R"(v24@0:8@?<v@?@"NSString">16)"},
    {MessageId::enumerateActiveGuiDomains,
     "enumerateActiveGuiDomainsWithReply:",
     {},
     0,
     ReplyKind::text,
     R"(v24@0:8@?<v@?@"NSString">16)"},
    {MessageId::prepareForRemovalUnauthorized,
     "prepareForRemovalWithAcceptAudioInterruption:withReply:",
     {kAcceptAudioArgument},
     1,
     ReplyKind::text,
     R"(v28@0:8B16@?<v@?@"NSString">20)"},
    {MessageId::removeAppBundleUnauthorized,
     "removeAppBundleWithPath:withReply:",
     {kPathArgument},
     1,
     ReplyKind::boolean,
     R"(v32@0:8@"NSString"16@?<v@?B>24)"},
    {MessageId::finalizeRemovalUnauthorized, "finalizeRemoval", {}, 0, ReplyKind::none, "v16@0:8"},
    {MessageId::installSystemPkgUnauthorized,
     "installSystemPkgWithPkgPath:manifestJSON:acceptAudioInterruption:withReply:",
     {kPkgPathArgument, kManifestArgument, kAcceptAudioArgument},
     3,
     ReplyKind::text,
     R"(v44@0:8@"NSString"16@"NSString"24B32@?<v@?@"NSString">36)"},
    {MessageId::prepareForRemoval,
     "prepareForRemovalWithAuthorization:acceptAudioInterruption:withReply:",
     {kAuthorizationArgument, kAcceptAudioArgument},
     2,
     ReplyKind::text,
     R"(v36@0:8@"NSData"16B24@?<v@?@"NSString">28)"},
    {MessageId::removeAppBundle,
     "removeAppBundleWithAuthorization:path:withReply:",
     {kAuthorizationArgument, kPathArgument},
     2,
     ReplyKind::boolean,
     R"(v40@0:8@"NSData"16@"NSString"24@?<v@?B>32)"},
    {MessageId::finalizeRemoval,
     "finalizeRemovalWithAuthorization:withReply:",
     {kAuthorizationArgument},
     1,
     ReplyKind::boolean,
     R"(v32@0:8@"NSData"16@?<v@?B>24)"},
    {MessageId::installSystemPkg,
     "installSystemPkgWithAuthorization:pkgPath:manifestJSON:acceptAudioInterruption:withReply:",
     {kAuthorizationArgument, kPkgPathArgument, kManifestArgument, kAcceptAudioArgument},
     4,
     ReplyKind::text,
     R"(v52@0:8@"NSData"16@"NSString"24@"NSString"32B40@?<v@?@"NSString">44)"},
}};

constexpr const HalvoHelperMessage& halvoMessage(MessageId id) {
  return kHalvoHelperMessages[static_cast<std::size_t>(id)];
}

}  // namespace halvo
