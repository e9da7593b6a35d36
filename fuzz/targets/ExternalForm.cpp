// The bytes that a client sends as proof of an administrator's approval. The input: how Authorization Services answer,
// how much of a live form the bytes begin with, and what is laid over them.
#include <Security/Security.h>

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "HalvoHelper/security/RealAdminAuthorizer.h"
#include "HalvoHelper/security/ScopedAuthorization.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Target.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo::fuzz {
namespace {

using Calls = std::vector<std::string>;
using Form = std::vector<std::byte>;

// A client that keeps an authorization, on a machine of its own.
class Client {
 public:
  Client() {
    sim::setStateRoot(state_.path());
    AuthorizationRef raw = nullptr;
    AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &raw);
    reference_.reset(raw);
    AuthorizationExternalForm form{};
    AuthorizationMakeExternalForm(raw, &form);
    const auto bytes = std::as_bytes(std::span(form.bytes));
    form_.assign(bytes.begin(), bytes.end());
  }

  [[nodiscard]] const Form& form() const { return form_; }

 private:
  TemporaryDirectory state_;
  ScopedAuthorization reference_;
  Form form_;
};

struct Case {
  OSStatus creation;
  bool hasReference;
  OSStatus rights;
  Form form;
};

OSStatus statusFrom(Input& input) {
  constexpr std::array<OSStatus, 6> kStatuses = {0, 0, -60002, -60005, -60008, 1};
  return kStatuses[input.index(kStatuses.size())];
}

Case caseFrom(std::string_view bytes, const Form& live) {
  Input input(bytes);
  Case drawn{statusFrom(input), input.byte() % 4 != 0, statusFrom(input), live};
  drawn.form.resize(input.index(80));
  const std::string over = input.rest();
  for (std::size_t i = 0; i < over.size(); ++i) {
    if (i == drawn.form.size()) drawn.form.push_back(std::byte{0});
    drawn.form[i] ^= static_cast<std::byte>(over[i]);
  }
  return drawn;
}

void script(sim::FrameworkProbe& probe, const Case& drawn) {
  constexpr const char* kCreate = "AuthorizationCreateFromExternalForm";
  if (drawn.creation != errAuthorizationSuccess) {
    // Whatever it is worth, a reference may come with a failure.
    drawn.hasReference ? probe.failNextWithResult(kCreate, drawn.creation) : probe.failNext(kCreate, drawn.creation);
  } else if (!drawn.hasReference) {
    probe.nullNext(kCreate);
  }
  probe.failNext("AuthorizationCopyRights", drawn.rights);
}

std::string hexadecimal(const Form& form) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::byte byte : form) {
    text += kDigits[std::to_integer<std::size_t>(byte >> 4)];
    text += kDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
  }
  return text;
}

// Which calls the form must lead to.
Calls callsByTheRules(const Case& drawn, const Form& live) {
  if (drawn.form.size() != 32) return {};
  Calls calls = {"AuthorizationCreateFromExternalForm form=" + hexadecimal(drawn.form)};
  const bool gaveReference = drawn.hasReference && drawn.form == live;
  if (gaveReference && drawn.creation == 0) {
    calls.emplace_back("AuthorizationCopyRights flags=2 rights=com.halvo.helper.manage-system");
  }
  if (gaveReference) calls.emplace_back("AuthorizationFree flags=0");
  return calls;
}

}  // namespace

void check(std::string_view bytes) {
  static const Client client;
  const Case drawn = caseFrom(bytes, client.form());
  const auto before = sim::FrameworkProbe::liveObjects();
  sim::FrameworkProbe probe;
  script(probe, drawn);

  const bool isAuthorized = RealAdminAuthorizer().isAuthorized(drawn.form);

  require(probe.calls() == callsByTheRules(drawn, client.form()), "only 32 bytes reach the platform, once, unchanged");
  require(isAuthorized == (drawn.form == client.form() && drawn.creation == 0 && drawn.hasReference &&
                           drawn.rights == errAuthorizationSuccess),
          "authorized is who has a live form that carries the right");
  require(sim::FrameworkProbe::liveObjects() == before, "every reference is freed");
}

}  // namespace halvo::fuzz
