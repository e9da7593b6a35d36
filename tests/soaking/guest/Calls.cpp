// An admitted client without an administrator's approval that calls everything with anything.
#include <atomic>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/soaking/guest/Verbs.h"
#include "tests/soaking/guest/Words.h"

namespace halvo::soak {
namespace {

constexpr int kThreads = 4;
constexpr int kCallsPerConnection = 200;

class Values {
 public:
  explicit Values(unsigned seed) : random_(seed) {}

  int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
  bool flag() { return below(2) == 0; }

  AuthorizationBlob form() {
    constexpr int kRealSize = 32;
    AuthorizationBlob blob(static_cast<std::size_t>(flag() ? kRealSize : below(100)));
    for (std::byte& byte : blob) byte = static_cast<std::byte>(below(256));
    return blob;
  }

  std::string text() {
    static const std::vector<std::string> kPieces = {"/",
                                                     "..",
                                                     "Halvo.app",
                                                     "/Applications/Halvo.app",
                                                     "\n",
                                                     "\x1b[2J",
                                                     "{\"a\":",
                                                     "\"driver_version\":\"9\"}",
                                                     "é",
                                                     "\xF0\x9F\x94\x8A",
                                                     "/var/db/halvo",
                                                     "-pkg"};
    std::string result;
    for (int pieces = below(6); pieces > 0; --pieces) result += kPieces[static_cast<std::size_t>(below(12))];
    constexpr int kLong = 5000;
    return below(100) == 0 ? result + std::string(static_cast<std::size_t>(below(kLong)), 'x') : result;
  }

 private:
  std::mt19937 random_;
};

// Which methods are called how often: the list of users runs tools, which take as long as everything else together.
enum Method { kPing, kUsers, kFirstChanging, kLegacyFinalize = 5, kMethods = 10 };

Method anyMethod(Values& values) {
  const int method = values.below(kMethods);
  return static_cast<Method>(method == kUsers && values.below(50) != 0 ? kPing : method);
}

void send(Method method, Values& values, HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean) {
  switch (static_cast<int>(method)) {
    case kPing:
      return helper.ping(text);
    case kUsers:
      return helper.enumerateActiveGuiDomains(text);
    case kFirstChanging:
      return helper.prepareForRemoval(values.flag(), text);
    case 3:
      return helper.removeAppBundle(values.text(), boolean);
    case 4:
      return helper.installSystemPkg(values.text(), values.text(), values.flag(), text);
    case 6:
      return helper.prepareForRemoval(values.form(), values.flag(), text);
    case 7:
      return helper.removeAppBundle(values.form(), values.text(), boolean);
    case 8:
      return helper.finalizeRemoval(values.form(), boolean);
    default:
      return helper.installSystemPkg(values.form(), values.text(), values.text(), values.flag(), text);
  }
}

bool isAsItShouldBe(Method method, const Outcome& outcome) {
  if (method == kLegacyFinalize) return std::holds_alternative<NoReply>(outcome);
  if (const auto* flag = std::get_if<bool>(&outcome)) return !*flag;
  const auto* text = std::get_if<std::string>(&outcome);
  if (text == nullptr) return false;
  if (method == kPing) return text->starts_with("{\"ok\":true,");
  if (method == kUsers) return text->starts_with("{\"uids\":[");
  return *text == R"({"code":"unauthorized"})";
}

Outcome call(Method method, Values& values, Conversation& conversation) {
  if (method == kLegacyFinalize) {
    return conversation.tell([](HalvoHelperProtocol& helper) { helper.finalizeRemoval(); });
  }
  return conversation.ask([&](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply& boolean) {
    send(method, values, helper, text, boolean);
  });
}

// Takes from `left` until nothing is left or a reply is wrong.
void keepCalling(std::atomic<int>& left, std::atomic<int>& wrong, unsigned seed) {
  Values values(seed);
  while (left > 0 && wrong == 0) {
    Conversation conversation = converse();
    for (int i = 0; i < kCallsPerConnection && wrong == 0 && --left >= 0; ++i) {
      const Method method = anyMethod(values);
      const Outcome outcome = call(method, values, conversation);
      if (isAsItShouldBe(method, outcome)) continue;
      ++wrong;
      std::cerr << "method " << method << " was answered: " << describe(outcome) << '\n';
    }
  }
}

}  // namespace

int calls(const Arguments& arguments) {
  std::atomic<int> left = std::stoi(arguments.at(0));
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] { keepCalling(left, wrong, static_cast<unsigned>(std::stoul(arguments.at(1))) + i); });
  }
  for (std::thread& thread : threads) thread.join();
  return wrong == 0 ? 0 : 1;
}

}  // namespace halvo::soak
