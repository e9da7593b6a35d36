// What Swift's compiler would say about the example in Swift where there is none: the names of the protocol. Swift
// takes them from the header, where each stands beside the selector that goes over the wire.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "HalvoHelperXPC/Constants.h"
#include "HalvoHelperXPC/MessageTable.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsSubsetOf;

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

std::vector<std::string> firstGroups(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  std::transform(std::sregex_iterator(text.begin(), text.end(), expression), std::sregex_iterator(),
                 std::back_inserter(found), [](const std::smatch& match) { return match[1].str(); });
  return found;
}

// The selector of a method that Swift calls by that name: ping(withReply:) is pingWithReply:.
std::string selectorOf(const std::string& name) {
  const std::size_t bracket = name.find('(');
  std::string labels = name.substr(bracket + 1, name.size() - bracket - 2);
  if (labels.empty()) return name.substr(0, bracket);
  labels[0] = static_cast<char>(std::toupper(labels[0]));
  return name.substr(0, bracket) + (labels.starts_with("With") ? "" : "With") + labels;
}

std::vector<std::string> selectorsOf(std::vector<std::string> names) {
  std::ranges::transform(names, names.begin(), selectorOf);
  return names;
}

// A call as the example writes it: helper.ping(withReply: take).
std::string nameInCall(const std::string& call) {
  std::string labels;
  for (const std::string& label : firstGroups(call, R"((\w+):)")) labels += label + ":";
  return call.substr(0, call.find('(')) + "(" + labels + ")";
}

std::vector<std::string> callsIn(const std::string& source) {
  std::vector<std::string> calls = firstGroups(source, R"(\bhelper\.(\w+\([^()]*\)))");
  std::ranges::transform(calls, calls.begin(), nameInCall);
  return calls;
}

std::vector<std::string> selectorsOfTheTable() {
  std::vector<std::string> selectors;
  for (const HalvoHelperMessage& message : kHalvoHelperMessages) selectors.emplace_back(message.selector);
  return selectors;
}

const std::string kHeader = contentOf(HALVO_PROTOCOL_HEADER);
const std::string kExample = contentOf(HALVO_EXAMPLES "/swift/main.swift");
const std::vector<std::string> kNames = firstGroups(kHeader, R"(NS_SWIFT_NAME\((\w+\([\w:]*\))\);)");

TEST(SwiftNamesTest, StandBesideTheirSelectorsInTheOrderOfTheProtocol) {
  EXPECT_THAT(selectorsOf(kNames), ElementsAreArray(selectorsOfTheTable()));
}

TEST(SwiftNamesTest, AreThoseThatTheExampleCalls) {
  EXPECT_THAT(callsIn(kExample), IsSubsetOf(kNames));
  EXPECT_THAT(
      callsIn(kExample),
      ElementsAre("ping(withReply:)",
                  "installSystemPkg(authorization:pkgPath:manifestJSON:acceptAudioInterruption:withReply:)",
                  "prepareForRemoval(authorization:acceptAudioInterruption:withReply:)",
                  "removeAppBundle(authorization:path:withReply:)", "finalizeRemoval(authorization:withReply:)"));
}

TEST(SwiftNamesTest, TheExampleNamesNoOtherProtocol) {
  EXPECT_THAT(firstGroups(kHeader, R"(@protocol (\w+))"), ElementsAre("HalvoHelperProtocol"));
  EXPECT_THAT(firstGroups(kExample, R"(\bany ([A-Z]\w*))"), testing::Each("HalvoHelperProtocol"));
  EXPECT_THAT(firstGroups(kExample, R"(NSXPCInterface\(with: (\w+)\.self\))"), ElementsAre("HalvoHelperProtocol"));
}

TEST(SwiftNamesTest, TheExamplesConstantsAreTheProducts) {
  EXPECT_THAT(kExample, HasSubstr("let machService = \"" + std::string(kHalvoHelperMachService) + "\"\n"));
  EXPECT_THAT(kExample, HasSubstr("let adminRight = \"" + std::string(kHalvoAdminRight) + "\"\n"));
}

}  // namespace
}  // namespace halvo
