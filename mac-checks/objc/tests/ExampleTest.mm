// The example application: what it asks the system and the helper for, in which order, and what it tells a person.
#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "mac-checks/objc/doubles/AuthorizationDouble.h"
#include "mac-checks/objc/doubles/SerialQueue.h"
#include "mac-checks/objc/tests/ServiceFixture.h"

int halvoExample(int argc, char* argv[]);

namespace halvo::sim {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr const char* kPong = R"({"ok":true,"helper_version":6,"build_abi":1})";
constexpr const char* kAudioActive = R"({"code":"audio_active"})";
constexpr const char* kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
constexpr const char* kForm = "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";
const std::string kInstallCall =
    std::string("installSystemPkg authorization=") + kForm + " pkgPath=/Halvo.pkg manifest=";

// Everything that is printed, while this lives; what is read comes from `typed`.
class Terminal {
 public:
  explicit Terminal(const std::string& typed) : in_(typed) {}
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    std::cin.rdbuf(formerIn_);
    std::cout.rdbuf(formerOut_);
  }
  std::string shown() const { return out_.str(); }

 private:
  std::istringstream in_;
  std::ostringstream out_;
  std::streambuf* const formerIn_ = std::cin.rdbuf(in_.rdbuf());
  std::streambuf* const formerOut_ = std::cout.rdbuf(out_.rdbuf());
};

class ExampleTest : public testing::Test {
 protected:
  ExampleTest() {
    serviceManager.status = SMAppServiceStatusEnabled;
    setDoubleClientIdentity(boxed(kSampleToken), 4711);
    listener_->setDelegate(delegate_);
    listener_->resume();
  }
  ~ExampleTest() override {
    @autoreleasepool {
      EXPECT_EQ(livingAuthorizations(), 0);
      EXPECT_EQ(openDoubleConnections("com.halvo.helper"), 0U);
      listener_.reset();
      delegate_->handler->textReplies.clear();
      setDoubleClientIdentity(nil, 0);
    }
    // The helper's last call may still be about to choose its next text.
    waitForSerialQueues();
    resetAuthorizations();
    serviceManager = {};
  }

  // The helper's texts, one for each request; it ends at one more.
  void helperAnswers(const std::deque<std::string>& texts) {
    texts_ = texts;
    nextText();
    delegate_->handler->onTextCall = [this] { nextText(); };
  }

  std::vector<std::string> requests() const { return delegate_->handler->calls; }

  int run(std::vector<std::string> words, const std::string& typed = {}) {
    const Terminal terminal(typed);
    std::string name = "halvo-example";
    std::vector<char*> argv = {name.data()};
    for (std::string& word : words) argv.push_back(word.data());
    const int status = halvoExample(static_cast<int>(argv.size()), argv.data());
    shown = terminal.shown();
    return status;
  }
  int install(const std::string& typed = {}) { return run({"install", "/Halvo.pkg", "/none.json"}, typed); }

  std::string shown;
  const std::shared_ptr<ScriptedDelegate> delegate_ = std::make_shared<ScriptedDelegate>();

 private:
  void nextText() {
    if (delegate_->handler->keepsTextReplies) return endDoubleService("com.halvo.helper");
    delegate_->handler->keepsTextReplies = texts_.empty();
    if (texts_.empty()) return;
    delegate_->handler->textAnswer = texts_.front();
    texts_.pop_front();
  }

  std::deque<std::string> texts_;
  std::unique_ptr<ServiceListener> listener_ = ServiceListener::forMachService("com.halvo.helper");
};

TEST_F(ExampleTest, ExplainsHowItIsCalled) {
  EXPECT_EQ(run({"install", "Halvo.pkg", "manifest.json"}), 64);

  EXPECT_EQ(shown, "usage: halvo-example install /PACKAGE MANIFEST | uninstall\n");
  EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(ExampleTest, RegistersTheHelperThatIsNotRegistered) {
  serviceManager.status = SMAppServiceStatusNotRegistered;
  helperAnswers({kPong, kInstalled});

  EXPECT_EQ(install(), 0);

  EXPECT_EQ(serviceManager.status, SMAppServiceStatusEnabled);
}

TEST_F(ExampleTest, OpensTheSettingsWhereAnAdministratorHasToAllowTheHelper) {
  serviceManager.status = SMAppServiceStatusNotRegistered;
  serviceManager.asksAnAdministrator = true;

  EXPECT_EQ(install(), 1);

  EXPECT_EQ(shown, "Allow Halvo under Login Items in the window that opens, and try again.\n");
  EXPECT_THAT(serviceManager.calls, Contains("open settings"));
  EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(ExampleTest, SaysWhyTheHelperCannotBeRegistered) {
  serviceManager.status = SMAppServiceStatusNotFound;
  serviceManager.error = [NSError errorWithDomain:@"SMAppServiceErrorDomain"
                                             code:8
                                         userInfo:@{NSLocalizedDescriptionKey : @"No such list."}];

  EXPECT_EQ(install(), 1);

  EXPECT_EQ(shown, "The helper could not be registered. Install Halvo again. No such list.\n");
}

TEST_F(ExampleTest, AsksForNoPasswordWhereTheHelperDoesNotTakeIt) {
  delegate_->admits = false;

  EXPECT_EQ(install(), 1);

  EXPECT_EQ(shown, "The helper does not answer. Start Halvo again; if that does not help, restart the Mac.\n");
  EXPECT_THAT(promptedRights(), IsEmpty());
}

TEST_F(ExampleTest, AsksAnIdleHelperThatExitsOnceMore) {
  failNextDoubleMessage([NSError errorWithDomain:NSCocoaErrorDomain code:NSXPCConnectionInterrupted userInfo:nil]);
  helperAnswers({kPong, kInstalled});

  EXPECT_EQ(install(), 0);
}

TEST_F(ExampleTest, AsksForNoPasswordWhereTheHelperIsTooOld) {
  helperAnswers({R"({"ok":true,"helper_version":5,"build_abi":1})"});

  EXPECT_EQ(install(), 1);

  EXPECT_EQ(shown, "The installed helper is too old. Open the newest version of Halvo once, and try again.\n");
  EXPECT_THAT(promptedRights(), IsEmpty());
}

TEST_F(ExampleTest, AsksTheHelperForNothingWithoutAnApproval) {
  helperAnswers({kPong});
  answerPromptsWith(errAuthorizationCanceled);

  EXPECT_EQ(install(), 1);

  EXPECT_THAT(shown, EndsWith("\nAn administrator has to approve this, and none did. Nothing was changed.\n"));
  EXPECT_THAT(requests(), ElementsAre("ping"));
}

TEST_F(ExampleTest, InstallsWithTheProductsRight) {
  helperAnswers({kPong, kInstalled});

  EXPECT_EQ(install(), 0);

  EXPECT_EQ(shown, "The helper answers, version 6.\nDone.\n");
  EXPECT_THAT(promptedRights(), ElementsAre("com.halvo.helper.manage-system"));
  EXPECT_THAT(requests(), ElementsAre("ping", kInstallCall + " accept=0"));
}

TEST_F(ExampleTest, InterruptsAudioOnlyForWhoSaysYes) {
  helperAnswers({kPong, kAudioActive, kInstalled});

  EXPECT_EQ(install("y\n"), 0);

  EXPECT_THAT(requests(), ElementsAre("ping", kInstallCall + " accept=0", kInstallCall + " accept=1"));
  EXPECT_THAT(promptedRights().size(), 1U);
}

TEST_F(ExampleTest, LeavesAudioAloneForWhoSaysNothing) {
  helperAnswers({kPong, kAudioActive});

  EXPECT_EQ(install(), 1);

  EXPECT_THAT(shown, EndsWith("Continue? [y/n] Audio is running. Nothing was changed.\n"));
  EXPECT_THAT(requests(), ElementsAre("ping", kInstallCall + " accept=0"));
}

TEST_F(ExampleTest, SaysWhereToLookWhenTheHelperEndsDuringAnInstall) {
  helperAnswers({kPong});

  EXPECT_EQ(install(), 1);

  EXPECT_THAT(shown, EndsWith("How far it came, the last lines of /var/log/halvo-install.log say.\n"));
}

struct ReplyRow {
  const char* name;
  const char* reply;
  const char* sentence;
};

class ExampleReply : public ExampleTest, public testing::WithParamInterface<ReplyRow> {};

TEST_P(ExampleReply, IsToldInASentence) {
  helperAnswers({kPong, GetParam().reply});

  EXPECT_EQ(install(), 1);

  EXPECT_EQ(shown, std::string("The helper answers, version 6.\n") + GetParam().sentence + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Table, ExampleReply,
    testing::Values(
        ReplyRow{"Unauthorized", R"({"code":"unauthorized"})",
                 "The approval was not accepted, perhaps because it is more than five minutes old. Try again."},
        ReplyRow{"Downgrade", R"({"code":"downgrade","installed":"2","incoming":"1"})",
                 "A newer version is installed already. Nothing was changed."},
        ReplyRow{"SecondCode", R"({"code":"downgrade","installed":"2","incoming":"1","code":"ok"})",
                 "A newer version is installed already. Nothing was changed."},
        ReplyRow{"Untrusted", R"({"code":"untrusted_package","reason":"wrong_team"})",
                 "The package was refused, and nothing was changed. Download it again from the maker. (wrong_team)"},
        ReplyRow{"NotStaged", R"({"code":"untrusted_package","reason":"staging_failed"})",
                 "The package was refused, and nothing was changed. Put it into another folder, see that the disk is "
                 "not full, and try again."},
        ReplyRow{"RolledBack", R"({"code":"rolled_back","log_path":"/log"})",
                 "The installer failed; the previous version was put back. Keep the log for support."},
        ReplyRow{"Failed", R"({"code":"install_failed","log_path":"/log"})",
                 "The install failed. Keep the log for support."},
        ReplyRow{"Unknown", R"({"code":"moved"})", "The helper answered something unknown. Update Halvo."},
        ReplyRow{"NoJSON", "ok", "The helper answered something unknown. Update Halvo."}),
    [](const auto& row) { return row.param.name; });

TEST_F(ExampleTest, RemovesPartsThenApplicationThenHelperWithOneApproval) {
  helperAnswers({kPong, R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})"});

  EXPECT_EQ(run({"uninstall"}), 0);

  EXPECT_THAT(shown, EndsWith("\nDone.\nHalvo is removed.\n"));
  EXPECT_THAT(requests(),
              ElementsAre("ping", std::string("prepareForRemoval authorization=") + kForm + " accept=0",
                          std::string("removeAppBundle authorization=") + kForm + " path=/Applications/Halvo.app",
                          std::string("finalizeRemoval authorization=") + kForm));
  EXPECT_THAT(promptedRights().size(), 1U);
}

TEST_F(ExampleTest, KeepsApplicationAndHelperWhereAPartIsLeft) {
  helperAnswers({kPong, R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})"});

  EXPECT_EQ(run({"uninstall"}), 1);

  EXPECT_THAT(shown, EndsWith("\nSomething could not be removed; the log names it. Try again.\n"));
  EXPECT_EQ(requests().size(), 2U);
}

TEST_F(ExampleTest, KeepsTheHelperWhereTheApplicationIsLeft) {
  helperAnswers({kPong, R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})"});
  delegate_->handler->boolAnswer = false;

  EXPECT_EQ(run({"uninstall"}), 1);

  EXPECT_THAT(shown, EndsWith("\nThe application could not be removed. It and its helper stay.\n"));
  EXPECT_EQ(requests().size(), 3U);
}

}  // namespace
}  // namespace halvo::sim
