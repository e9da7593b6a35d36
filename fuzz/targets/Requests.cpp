// Requests with any arguments, one after the other on one connection. The input draws each request, whether it is
// authorized, and how its operation ends.
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelperXPC/MessageTable.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

using Trace = std::vector<std::string>;

struct Request {
  MessageId id = MessageId::ping;
  bool accept = false;
  bool isAuthorized = false;
  std::size_t outcome = 0;
  std::string blob, path, manifest;
};

Request requestFrom(Input& input) {
  const auto id = static_cast<MessageId>(input.index(kHalvoHelperMessages.size()));
  const unsigned switches = input.byte();
  return {.id = id,
          .accept = (switches & 1U) != 0,
          .isAuthorized = (switches & 2U) != 0,
          .outcome = input.index(8),
          .blob = input.text(),
          .path = input.text(),
          .manifest = input.text()};
}

std::string word(bool flag) { return flag ? "true" : "false"; }

// How an operation ends, and what the client is told then.
struct InstallEnd {
  InstallResult result;
  std::string reply;
};

InstallEnd installEnd(const Request& r) {
  switch (r.outcome % 6) {
    case 0:
      return {InstallDowngrade{r.path, r.manifest},
              R"({"code":"downgrade","installed":")" + r.path + R"(","incoming":")" + r.manifest + "\"}"};
    case 1:
      return {InstallOk{{"driver", "broker"}}, R"({"code":"ok","changed":["driver","broker"]})"};
    case 2:
      return {InstallFailed{r.path}, R"({"code":"install_failed","log_path":")" + r.path + "\"}"};
    case 3:
      return {InstallRolledBack{r.path}, R"({"code":"rolled_back","log_path":")" + r.path + "\"}"};
    case 4:
      return {InstallUntrustedPackage{HalvoPkgDistrust::wrongTeam},
              R"({"code":"untrusted_package","reason":"wrong_team"})"};
    default:
      return {InstallAudioActive{}, R"({"code":"audio_active"})"};
  }
}

struct UninstallEnd {
  UninstallResult result;
  std::string reply;
};

UninstallEnd uninstallEnd(const Request& r) {
  switch (r.outcome % 3) {
    case 0:
      return {UninstallOk{r.path}, R"({"code":"ok","gui_app_path":")" + r.path + "\"}"};
    case 1:
      return {UninstallIncomplete{r.path}, R"({"code":"incomplete","log_path":")" + r.path + "\"}"};
    default:
      return {UninstallAudioActive{}, R"({"code":"audio_active"})"};
  }
}

bool removalEnd(const Request& r) { return r.outcome % 2 == 0; }

std::vector<std::int64_t> usersOf(const Request& r) { return std::vector<std::int64_t>(r.outcome % 3, 501); }

std::string usersReply(const Request& r) {
  constexpr std::array<const char*, 3> kReplies = {R"({"uids":[]})", R"({"uids":[501]})", R"({"uids":[501,501]})"};
  return kReplies[r.outcome % 3];
}

// What happens when the request is authorized: operation and reply, in their order.
Trace actionByTheRules(const Request& r) {
  switch (r.id) {
    case MessageId::ping:
      return {R"(reply {"ok":true,"helper_version":6,"build_abi":7})"};
    case MessageId::enumerateActiveGuiDomains:
      return {"enumerate", "reply " + usersReply(r)};
    case MessageId::prepareForRemoval:
      return {"uninstall " + word(r.accept), "reply " + uninstallEnd(r).reply};
    case MessageId::removeAppBundle:
      return {"removeBundle " + r.path, "reply " + word(removalEnd(r))};
    case MessageId::finalizeRemoval:
      return {"reply true", "finalize"};
    case MessageId::installSystemPkg:
      return {"install " + r.path + "|" + r.manifest + "|" + word(r.accept), "reply " + installEnd(r).reply};
    case MessageId::prepareForRemovalUnauthorized:
    case MessageId::installSystemPkgUnauthorized:
      return {R"(reply {"code":"unauthorized"})"};
    case MessageId::removeAppBundleUnauthorized:
      return {"reply false"};
    case MessageId::finalizeRemovalUnauthorized:
      break;
  }
  return {};
}

Trace traceByTheRules(const Request& r, bool isCounted) {
  if (r.id == MessageId::finalizeRemovalUnauthorized) return {};
  Trace trace = actionByTheRules(r);
  const HalvoHelperMessage& message = halvoMessage(r.id);
  if (message.argumentSlots[0].kind == ArgumentKind::data && message.argumentCount > 0) {
    const bool isText = message.reply == ReplyKind::text;
    if (!r.isAuthorized) trace = {isText ? R"(reply {"code":"unauthorized"})" : "reply false"};
    trace.insert(trace.begin(), "authorize " + r.blob);
  }
  if (isCounted) {
    trace.insert(trace.begin(), "clock");
    trace.emplace_back("clock");
  }
  return trace;
}

// A handler whose every collaborator notes that it was called.
class Bench {
 public:
  explicit Bench(bool isCounted) {
    if (isCounted) tracker_ = std::make_shared<ActivityTracker>([this] { return note("clock"), 1000.0; });
    handler_ = std::make_unique<HelperHandler>(operations());
  }

  Trace traceOf(const Request& request) {
    request_ = request;
    trace_.clear();
    send();
    Trace trace = std::exchange(trace_, {});
    require(!tracker_ || tracker_->isIdle(0.0), "every call that was counted in is counted out");
    return trace;
  }

 private:
  HelperOperations operations() {
    return {
        .buildABI = 7,
        .enumerate = [this] { return noteInFlight("enumerate"), usersOf(request_); },
        .uninstall =
            [this](bool accept) { return noteInFlight("uninstall " + word(accept)), uninstallEnd(request_).result; },
        .removeBundle =
            [this](const std::string& path) { return noteInFlight("removeBundle " + path), removalEnd(request_); },
        .finalize = [this] { noteInFlight("finalize"); },
        .install =
            [this](const std::string& path, const std::string& manifest, bool accept) {
              noteInFlight("install " + path + "|" + manifest + "|" + word(accept));
              return installEnd(request_).result;
            },
        .authorize =
            [this](const AuthorizationBlob& blob) {
              const auto* first = reinterpret_cast<const char*>(blob.data());
              return noteInFlight("authorize " + std::string(first, blob.size())), request_.isAuthorized;
            },
        .activity = tracker_};
  }

  void note(std::string event) { trace_.push_back(std::move(event)); }

  void noteInFlight(std::string event) {
    if (tracker_) {
      require(!tracker_->isIdle(0.0), "the helper does not count as idle meanwhile");
    }
    note(std::move(event));
  }

  void send() {
    const Request& r = request_;
    const auto* first = reinterpret_cast<const std::byte*>(r.blob.data());
    const AuthorizationBlob blob(first, first + r.blob.size());
    const TextReply text = [this](const std::string& json) { noteInFlight("reply " + json); };
    const BoolReply boolean = [this](bool succeeded) { noteInFlight("reply " + word(succeeded)); };
    const std::array<std::function<void()>, kHalvoHelperMessages.size()> calls = {
        [&] { handler_->ping(text); },
        [&] { handler_->enumerateActiveGuiDomains(text); },
        [&] { handler_->prepareForRemoval(r.accept, text); },
        [&] { handler_->removeAppBundle(r.path, boolean); },
        [&] { handler_->finalizeRemoval(); },
        [&] { handler_->installSystemPkg(r.path, r.manifest, r.accept, text); },
        [&] { handler_->prepareForRemoval(blob, r.accept, text); },
        [&] { handler_->removeAppBundle(blob, r.path, boolean); },
        [&] { handler_->finalizeRemoval(blob, boolean); },
        [&] { handler_->installSystemPkg(blob, r.path, r.manifest, r.accept, text); },
    };
    calls[static_cast<std::size_t>(r.id)]();
  }

  Trace trace_;
  Request request_;
  std::shared_ptr<ActivityTracker> tracker_;
  std::unique_ptr<HelperHandler> handler_;
};

}  // namespace

void check(std::string_view bytes) {
  constexpr int kMostRequests = 16;
  Input input(bytes);
  const bool isCounted = !input.flag();
  Bench bench(isCounted);
  for (int i = 0; i < kMostRequests && !input.empty(); ++i) {
    const Request request = requestFrom(input);
    require(bench.traceOf(request) == traceByTheRules(request, isCounted),
            "counted, authorized, acted upon and answered, each in its turn and nothing else");
  }
}

}  // namespace halvo::fuzz
