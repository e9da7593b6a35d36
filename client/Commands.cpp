#include "client/Commands.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "HalvoHelperXPC/ReplyParsers.h"
#include "client/AdminGrant.h"
#include "client/Manifest.h"
#include "client/Message.h"
#include "client/VisibleFaults.h"
#include "client/WaitingDisplay.h"
#include "client/doctor/Doctor.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

ExitStatus tell(const Explanation& explanation, const Surroundings& surroundings) {
  if (!explanation.text.empty()) say(surroundings.err, explanation.text);
  return explanation.status;
}

ExitStatus report(const CommandLine& command, const Outcome& outcome, const Surroundings& surroundings,
                  const Seen& seen = {}) {
  if (const auto* text = std::get_if<std::string>(&outcome)) {
    surroundings.out << *text << '\n' << std::flush;
    return tell(explainTextReply(command, *text, seen), surroundings);
  }
  if (const bool* flag = std::get_if<bool>(&outcome)) {
    surroundings.out << (*flag ? "true" : "false") << '\n' << std::flush;
    return tell(explainBoolReply(command, *flag, seen), surroundings);
  }
  if (std::holds_alternative<NoReply>(outcome)) return tell(explainNoReply(command), surroundings);
  if (std::holds_alternative<TimedOut>(outcome)) return tell(explainTimeOut(command), surroundings);
  return tell(explainFailure(command, std::get<ServiceFailure>(outcome)), surroundings);
}

// The helper has another working directory than this program.
std::string absolutePath(const std::string& path) {
  std::error_code noFolder;  // The path stays as it was typed then.
  return (std::filesystem::current_path(noFolder) / path).string();
}

// What needs no approval, or has none to give.
void sendPlain(const CommandLine& command, const std::string& manifest, HalvoHelperProtocol& helper,
               const TextReply& text, const BoolReply& boolean) {
  switch (command.verb) {
    case Verb::ping:
      return helper.ping(text);
    case Verb::users:
      return helper.enumerateActiveGuiDomains(text);
    case Verb::install:
      return helper.installSystemPkg(absolutePath(command.path), manifest, command.acceptAudioInterruption, text);
    case Verb::prepareRemoval:
      return helper.prepareForRemoval(command.acceptAudioInterruption, text);
    case Verb::removeBundle:
      return helper.removeAppBundle(command.path, boolean);
    case Verb::finalize:
      return helper.finalizeRemoval();
    // Not reached: the one is made of the three removals, the other asks for itself.
    case Verb::uninstall:
    case Verb::doctor:
      return;
  }
}

void sendAuthorized(const CommandLine& command, const AuthorizationBlob& form, const std::string& manifest,
                    HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean) {
  switch (command.verb) {
    case Verb::install:
      return helper.installSystemPkg(form, absolutePath(command.path), manifest, command.acceptAudioInterruption, text);
    case Verb::prepareRemoval:
      return helper.prepareForRemoval(form, command.acceptAudioInterruption, text);
    case Verb::removeBundle:
      return helper.removeAppBundle(form, command.path, boolean);
    case Verb::finalize:
      return helper.finalizeRemoval(form, boolean);
    // Not reached: no approval is asked for the first three, and the last is made of the three removals.
    case Verb::ping:
    case Verb::users:
    case Verb::doctor:
    case Verb::uninstall:
      return;
  }
}

bool changesNothing(const CommandLine& command) { return command.verb == Verb::ping || command.verb == Verb::users; }

// A connection that is cut off twice before an answer: the helper may have refused it, or ended. Which of both shows is
// a matter of moments, so that it is told in one way.
Outcome ofAClientThatMayBeRefused(const Outcome& outcome) {
  const auto* failure = std::get_if<ServiceFailure>(&outcome);
  if (failure == nullptr || failure->kind != ServiceFailure::Kind::interrupted) return outcome;
  return ServiceFailure{ServiceFailure::Kind::unreachable, failure->description};
}

// Asks what needs no approval, or has none to give.
Outcome askPlain(const CommandLine& command, const std::string& manifest, Conversation& conversation) {
  const auto send = [&](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean) {
    sendPlain(command, manifest, helper, text, boolean);
  };
  if (changesNothing(command)) return ofAClientThatMayBeRefused(conversation.askRepeatably(send));
  if (command.verb == Verb::finalize) {
    return conversation.tell([&](HalvoHelperProtocol& helper) { send(helper, {}, {}); });
  }
  return conversation.ask(send);
}

// Asks the helper for its version; answers why the request cannot be made, if so.
std::optional<Explanation> helperCannotDoIt(const CommandLine& command, Conversation& conversation) {
  const Outcome ping = ofAClientThatMayBeRefused(conversation.askRepeatably(
      [](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply&) { helper.ping(text); }));
  const CommandLine question{.verb = Verb::ping, .timeout = command.timeout};
  if (const auto* failure = std::get_if<ServiceFailure>(&ping)) return explainFailure(question, *failure);
  if (std::holds_alternative<TimedOut>(ping)) return explainTimeOut(question);
  if (halvoHelperSupportsAuthorization(halvoParseHelperVersion(std::get<std::string>(ping)))) return std::nullopt;
  return explainOldHelper();
}

// A client whose ping was answered is admitted: what ended a later connection was the end of the helper.
Outcome ofAnAdmittedClient(const Outcome& outcome) {
  const auto* failure = std::get_if<ServiceFailure>(&outcome);
  if (failure == nullptr || failure->kind != ServiceFailure::Kind::unreachable) return outcome;
  return ServiceFailure{ServiceFailure::Kind::interrupted, failure->description};
}

Outcome askAndShow(const CommandLine& command, const AdminGrant& grant, const std::string& manifest,
                   Conversation& conversation, const Surroundings& surroundings) {
  WaitingDisplay display(command, surroundings);
  return conversation.ask(
      [&](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean) {
        sendAuthorized(command, grant.externalForm(), manifest, helper, text, boolean);
      },
      [&] { display.look(); });
}

// What there is to see before a request changes it.
Seen lookAround(const CommandLine& command, const std::string& manifest, const LocalView& view) {
  Seen seen{.manifestNamesVersion = namesVersion(manifest),
            .productWasInstalled = view.productIsInstalled(),
            .stagingWasLeft = view.stagingIsLeft()};
  if (command.verb == Verb::removeBundle) seen.faultOfBundle = faultOfBundle(command.path);
  return seen;
}

// One authorized request and what came of it, shown.
struct Answered {
  ExitStatus status;
  Outcome outcome;
};

Answered request(const CommandLine& command, const AdminGrant& grant, const std::string& manifest,
                 Conversation& conversation, const Surroundings& surroundings) {
  Seen seen = lookAround(command, manifest, surroundings.view);
  const Outcome outcome = ofAnAdmittedClient(askAndShow(command, grant, manifest, conversation, surroundings));
  seen.diskIsFull = surroundings.view.diskIsFull();
  return {report(command, outcome, surroundings, seen), outcome};
}

// Where the application lies: as typed, else as the helper says in its reply to the first step.
std::string bundleOf(const CommandLine& command, const std::string& firstReply) {
  if (!command.path.empty()) return command.path;
  const std::string key = "gui_app_path";
  const JSONObject reply = halvoReadJSONObject(firstReply).value_or(JSONObject());
  const auto* path = reply.contains(key) ? std::get_if<std::string>(&reply.at(key)) : nullptr;
  return path == nullptr ? std::string() : *path;
}

// The helper goes last, since it removes the rest; the program that asks may lie in the bundle that goes second. From
// then on a Mac would neither admit it on a new connection nor take a new approval from it: all three requests go over
// one connection and carry one approval.
ExitStatus uninstall(const CommandLine& command, const AdminGrant& grant, Conversation& conversation,
                     const Surroundings& surroundings) {
  CommandLine step = command;
  Outcome previous;
  for (const Verb verb : {Verb::prepareRemoval, Verb::removeBundle, Verb::finalize}) {
    step.verb = verb;
    // The first step succeeds with a text for its reply.
    if (verb == Verb::removeBundle) step.path = bundleOf(command, std::get<std::string>(previous));
    Answered answered = request(step, grant, {}, conversation, surroundings);
    if (answered.status != ExitStatus::success) {
      say(surroundings.err, explainEndOfUninstall(step));
      return answered.status;
    }
    previous = std::move(answered.outcome);
  }
  return ExitStatus::success;
}

ExitStatus askAuthorized(const CommandLine& command, const std::string& manifest, Conversation& conversation,
                         const Surroundings& surroundings) {
  if (const auto problem = helperCannotDoIt(command, conversation)) return tell(*problem, surroundings);
  const auto grant = command.withoutGrant ? AdminGrant::empty() : AdminGrant::obtain();
  if (const auto* refusal = std::get_if<AdminGrant::Refusal>(&grant)) {
    return tell(explainMissingApproval(refusal->status, {.diskIsFull = surroundings.view.diskIsFull()}), surroundings);
  }
  const auto& approval = std::get<AdminGrant>(grant);
  if (command.verb == Verb::uninstall) return uninstall(command, approval, conversation, surroundings);
  return request(command, approval, manifest, conversation, surroundings).status;
}

// What this program can see to be wrong with a request for which a password would be asked.
std::optional<std::string> visibleFault(const CommandLine& command, const std::string& manifest) {
  if (command.legacy || command.withoutChecks) return std::nullopt;
  const bool namesBundle = command.verb == Verb::removeBundle || command.verb == Verb::uninstall;
  if (namesBundle && !command.path.empty()) return faultOfBundle(command.path);
  if (command.verb != Verb::install) return std::nullopt;
  auto fault = faultOfManifest(manifest);
  return fault ? fault : faultOfPackage(command.path);
}

// Only for what is meant to succeed: who wants to see the helper refuse a package hands over that very one.
bool needsPrivateCopy(const CommandLine& command, const Surroundings& surroundings) {
  const bool plain = command.legacy || command.withoutChecks;
  return command.verb == Verb::install && !plain && surroundings.isKeptFromHelper(command.path);
}

ExitStatus ask(const CommandLine& command, const std::string& manifest, Conversation& conversation,
               const Surroundings& surroundings) {
  if (!command.legacy && !changesNothing(command)) return askAuthorized(command, manifest, conversation, surroundings);
  return report(command, askPlain(command, manifest, conversation), surroundings);
}

}  // namespace

ExitStatus runCommand(const CommandLine& command, Conversation& conversation, const Surroundings& surroundings) {
  if (command.verb == Verb::doctor) return runDoctor(command, conversation, surroundings.out);
  if (command.timeout) conversation.waitAtMost(*command.timeout);
  std::string manifest;
  if (command.verb == Verb::install) {
    auto text = readManifest(command.manifestPath);
    if (const auto* problem = std::get_if<UnreadableManifest>(&text)) {
      return tell({ExitStatus::unusableInput, problem->reason}, surroundings);
    }
    manifest = std::move(std::get<std::string>(text));
  }
  if (const auto fault = visibleFault(command, manifest)) {
    return tell({ExitStatus::unusableInput, *fault}, surroundings);
  }
  if (!needsPrivateCopy(command, surroundings)) return ask(command, manifest, conversation, surroundings);
  const auto copy = PrivateCopy::of(command.path, surroundings.temporaryFolder());
  if (const auto* problem = std::get_if<NoPrivateCopy>(&copy)) {
    return tell({ExitStatus::unusableInput, problem->reason}, surroundings);
  }
  CommandLine ofCopy = command;
  ofCopy.path = std::get<std::unique_ptr<const PrivateCopy>>(copy)->path();
  return ask(ofCopy, manifest, conversation, surroundings);
}

}  // namespace halvo
