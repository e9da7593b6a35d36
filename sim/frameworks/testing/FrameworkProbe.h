// Looks into the simulated frameworks from a test: which calls the code under test made, whether it released
// everything, and what happens when one call fails. Any thread may call frameworks meanwhile.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// Listens from construction to destruction; one at a time. Without one the frameworks record nothing.
//
// A call is recorded as its name and the arguments that matter, in the order of the calls:
//   AuthorizationCreate flags=0 rights=            AuthorizationFree flags=0
//   AuthorizationCopyRights flags=2 rights=a,b     AuthorizationCreateFromExternalForm form=<64 hex digits>
//   AuthorizationMakeExternalForm                  AuthorizationRightGet right=a
//   AuthorizationRightSet right=a prompt="text" bundle=null table=null definition={"class":"user",...}
//   SecRequirementCreateWithString flags=0 text="identifier \"x\""
//   SecCodeCopyGuestWithAttributes host=null flags=0 audit=<64 hex digits>
//   SecCodeCheckValidityWithErrors flags=0 requirement="identifier \"x\""
//   AudioObjectGetPropertyDataSize object=1 selector=dev# scope=glob element=0
//   AudioObjectGetPropertyData object=41 selector=gone scope=glob element=0
//   copyfile from=/a to=/b flags=0x10e800f
//   IOPMAssertionCreateWithName type=PreventUserIdleSystemSleep level=255 name="x"    IOPMAssertionRelease
// What callers leave empty is named only when they do not: the value and flags of an item ("rights=a(length=1
// value=null flags=0)"), an environment ("environment=given"), results that may be declined ("authorized=asked",
// "errors=asked"), a qualifier ("qualifier=4"). CFStringCreateWithBytes, CFDataCreate, CFDictionaryCreate and
// CFDictionaryCreateMutable are not recorded but can be scripted.
class FrameworkProbe {
 public:
  FrameworkProbe();
  FrameworkProbe(const FrameworkProbe&) = delete;
  FrameworkProbe& operator=(const FrameworkProbe&) = delete;
  ~FrameworkProbe();

  std::vector<std::string> calls() const;

  // The next call of `function` does nothing and answers `status`, its out-parameters untouched; for copyfile, -1 with
  // `status` as errno. Several answers for one function are given in order.
  void failNext(std::string_view function, std::int32_t status);

  // The next call of `function` does its work, stores its result and answers `status` all the same. No Mac does that
  // today, and nothing promises that none will. For AuthorizationCreate, AuthorizationCreateFromExternalForm,
  // AuthorizationRightGet and SecCodeCopyGuestWithAttributes.
  void failNextWithResult(std::string_view function, std::int32_t status);

  // The next call of `function` does nothing, answers success and stores a null out-parameter; one that returns an
  // object returns null.
  void nullNext(std::string_view function);

  // The next call of AuthorizationRightGet does nothing, answers success and stores this object, which must live until
  // then.
  void returnNextRight(CFDictionaryRef definition);

  // The next call that reads the device list finds only the first `count` devices, as when the others vanished after
  // the size was asked for.
  void shrinkDeviceList(std::size_t count);

  // The next call that asks for the size of the device list hears of the first `count` devices only, as when the others
  // came afterwards.
  void growDeviceList(std::size_t count);

  // CoreFoundation, Security and Authorization objects, spawn attributes and file actions that exist now, in the whole
  // process and whether or not a probe listens. Constants are not counted.
  static std::int64_t liveObjects();
};

}  // namespace halvo::sim
