// The helper's own main(), from its first act to its idle end, as what it asks of the system. The linker leads those
// calls through here, and time passes only when a test says so.
#include <Security/Security.h>
#include <dispatch/dispatch.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "main/MainQueue.h"
#include "platform/ServiceRegistration.h"
#include "platform/SystemLog.h"
#include "platform/SystemUptime.h"
#include "transport/ServiceListener.h"

// main/main.cpp is built under this name.
int halvoHelperMain();

namespace halvo {
namespace {

// The system, and what a test makes of it. Each test runs in a process of its own.
struct FakeSystem {
  void (*mainLoop)() = [] {};
  double uptime = 1000;
  CFTypeRef right = nullptr;  // as it was written
  OSStatus answerToRead = errAuthorizationSuccess;
  void* context = nullptr;
  dispatch_function_t check = nullptr;
};

FakeSystem& fakeSystem() {
  static FakeSystem system;
  return system;
}

void note(const std::string& event) { static_cast<void>(std::fputs((event + "\n").c_str(), stderr)); }

std::string milliseconds(std::uint64_t nanoseconds) { return std::to_string(nanoseconds / NSEC_PER_MSEC) + " ms"; }

class NotedListener final : public ServiceListener {
 public:
  void setDelegate(std::shared_ptr<ServiceListenerDelegate> delegate) override {
    note(delegate ? "delegate" : "no delegate");
  }
  void resume() override { note("listener serves"); }
};

}  // namespace

void halvoSystemLog(std::string_view line) { note("log: " + std::string(line)); }

std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName) {
  note("unregistered " + std::string(plistName));
  return std::nullopt;
}

double halvoSystemUptime() { return fakeSystem().uptime; }

std::unique_ptr<ServiceListener> ServiceListener::forMachService(const std::string& machServiceName) {
  note("listener of " + machServiceName);
  return std::make_unique<NotedListener>();
}

}  // namespace halvo

using halvo::fakeSystem;
using halvo::note;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker gives the names.
extern "C" {

using SignalHandler = void (*)(int);
SignalHandler __wrap_signal(int number, SignalHandler handler) {
  note(number == SIGCHLD && handler == SIG_DFL ? "SIGCHLD by default" : "another signal");
  return SIG_DFL;
}

// The database takes a reference before it writes; here any will do.
OSStatus __wrap_AuthorizationCreate(const AuthorizationRights*, const AuthorizationEnvironment*, AuthorizationFlags,
                                    AuthorizationRef* authorization) {
  *authorization = reinterpret_cast<AuthorizationRef>(&fakeSystem());
  return errAuthorizationSuccess;
}

OSStatus __wrap_AuthorizationFree(AuthorizationRef, AuthorizationFlags) { return errAuthorizationSuccess; }

OSStatus __wrap_AuthorizationRightSet(AuthorizationRef, const char*, CFTypeRef definition, CFStringRef, CFBundleRef,
                                      CFStringRef) {
  note("right written");
  fakeSystem().right = CFRetain(definition);
  return errAuthorizationSuccess;
}

OSStatus __wrap_AuthorizationRightGet(const char*, CFDictionaryRef* definition) {
  note("right read");
  *definition = static_cast<CFDictionaryRef>(fakeSystem().right);
  return fakeSystem().answerToRead;
}

dispatch_time_t __wrap_dispatch_time(dispatch_time_t, int64_t delta) { return static_cast<dispatch_time_t>(delta); }

void __wrap_dispatch_source_set_timer(dispatch_source_t, dispatch_time_t start, uint64_t interval, uint64_t leeway) {
  note("timer after " + halvo::milliseconds(start) + ", every " + halvo::milliseconds(interval) + ", leeway " +
       halvo::milliseconds(leeway));
}

void __wrap_dispatch_set_context(dispatch_object_t, void* context) { fakeSystem().context = context; }

void __wrap_dispatch_source_set_event_handler_f(dispatch_source_t, dispatch_function_t check) {
  fakeSystem().check = check;
}

void __wrap_dispatch_activate(dispatch_object_t) { note("timer armed"); }

void __wrap_dispatch_after_f(dispatch_time_t when, dispatch_queue_t, void*, dispatch_function_t) {
  note("work after " + halvo::milliseconds(when));
}

void __wrap_dispatch_main() {
  note("main loop");
  fakeSystem().mainLoop();
  std::_Exit(0);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace halvo {
namespace {

// What the timer does when the uptime is that long.
void lookAt(double uptime) {
  note("look");
  fakeSystem().uptime = uptime;
  fakeSystem().check(fakeSystem().context);
}

void start(void (*mainLoop)() = [] {}) {
  fakeSystem().mainLoop = mainLoop;
  halvoHelperMain();
}

constexpr const char* kRegistered =
    "log: halvo-helper: admin right com.halvo.helper.manage-system registered status=0 sound=";
constexpr const char* kServing =
    "timer after 15000 ms, every 15000 ms, leeway 0 ms\n"
    "timer armed\n"
    "listener of com.halvo.helper\n"
    "delegate\n"
    "listener serves\n"
    "log: halvo-helper: XPC listener up on com.halvo.helper .v6.\n"
    "main loop\n";
constexpr const char* kExits = "log: halvo-helper: idle for 60 s, exiting .launchd restarts on demand.\n";

std::string startedUp(const std::string& sound = "1") {
  return "^SIGCHLD by default\nright written\nright read\n" + std::string(kRegistered) + sound + "\n" + kServing;
}

TEST(StartUp, SettlesTheRightThenArmsTheTimerThenServesAndThenSaysSo) {
  EXPECT_EXIT(start(), testing::ExitedWithCode(0), startedUp() + "$");
}

TEST(StartUp, JudgesTheRightByWhatIsReadBack) {
  const auto startUnreadable = [] {
    fakeSystem().answerToRead = errAuthorizationDenied;
    start();
  };

  EXPECT_EXIT(startUnreadable(), testing::ExitedWithCode(0), startedUp("0") + "$");
}

TEST(StartUp, AHelperThatNobodyConnectsToExitsAtTheFourthLook) {
  const auto looks = [] {
    lookAt(1015);
    lookAt(1030);
    lookAt(1045);
    lookAt(1060);
    note("still there");
  };

  EXPECT_EXIT(start(looks), testing::ExitedWithCode(0), startedUp() + "look\nlook\nlook\nlook\n" + kExits + "$");
}

TEST(StartUp, AHelperThatIsNotYetIdleForAMinuteAtTheFourthLookExitsAtTheFifth) {
  const auto looks = [] {
    lookAt(1059.999);
    lookAt(1074.999);
    note("still there");
  };

  EXPECT_EXIT(start(looks), testing::ExitedWithCode(0), startedUp() + "look\nlook\n" + kExits + "$");
}

TEST(MainQueueCalls, AskForTheVeryDelayThatWasGiven) {
  const auto schedule = [] {
    halvoRunOnMainQueueAfter(std::chrono::milliseconds(300), [] {});
    std::_Exit(0);
  };

  EXPECT_EXIT(schedule(), testing::ExitedWithCode(0), "^work after 300 ms\n$");
}

}  // namespace
}  // namespace halvo
