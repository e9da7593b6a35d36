// Whoever shows replies to people finds each of them in the tables of docs/integration.md, and nothing else there; the
// examples know them all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelper/install/InstallResult.h"
#include "HalvoHelper/removal/UninstallResult.h"
#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

std::string codeOf(const std::string& reply) {
  const std::size_t begin = std::string_view("{\"code\":\"").size();
  return reply.substr(begin, reply.find('"', begin) - begin);
}

// A reply for each way in which a request can end.
template <typename Result, typename ToText>
std::vector<std::string> codesOf(ToText toText) {
  auto codes = [&]<std::size_t... index>(std::index_sequence<index...>) {
    return std::vector<std::string>{codeOf(toText(Result(std::in_place_index<index>)))...};
  }
  (std::make_index_sequence<std::variant_size_v<Result>>());
  codes.push_back(codeOf(std::string(kHalvoUnauthorizedReplyJSON)));
  return codes;
}

const std::vector<std::string> kInstallCodes = codesOf<InstallResult>(halvoInstallResultJSON);
const std::vector<std::string> kRemovalCodes = codesOf<UninstallResult>(halvoUninstallResultJSON);
const std::vector<std::string> kReasons(kHalvoPkgDistrustRawValues.begin(), kHalvoPkgDistrustRawValues.end());
const std::string kPage = contentOf(HALVO_INTEGRATION_PAGE);

// The second column of the page's rows whose first one is `request`; a row has something in all of its columns.
std::vector<std::string> rowsFor(const std::string& request) {
  const std::regex row("\n\\| " + request + " \\| `([^`]+)` \\| [^|\n]+ \\| [^|\n]+ \\|(?=\n)");
  std::vector<std::string> found;
  std::transform(std::sregex_iterator(kPage.begin(), kPage.end(), row), std::sregex_iterator(),
                 std::back_inserter(found), [](const std::smatch& match) { return match[1].str(); });
  return found;
}

TEST(ReplyTableTest, HasEveryCodeOfAnInstall) {
  EXPECT_THAT(rowsFor("install"), UnorderedElementsAreArray(kInstallCodes));
}

TEST(ReplyTableTest, HasEveryCodeOfARemoval) {
  EXPECT_THAT(rowsFor("removal"), UnorderedElementsAreArray(kRemovalCodes));
}

TEST(ReplyTableTest, HasEveryReasonAgainstAPackage) {
  EXPECT_THAT(rowsFor("package"), UnorderedElementsAreArray(kReasons));
}

TEST(ReplyTableTest, HasBothAnswersOfTheRequestsThatSayYesOrNo) {
  EXPECT_THAT(rowsFor("remove the bundle"), testing::ElementsAre("true", "false"));
  EXPECT_THAT(rowsFor("finalise"), testing::ElementsAre("true", "false"));
}

class ExampleSource : public testing::TestWithParam<const char*> {
 protected:
  // Those of `codes` that the source does not have as a text of its own.
  static std::vector<std::string> missing(std::vector<std::string> codes) {
    const std::string source = contentOf(std::string(HALVO_EXAMPLES) + GetParam());
    std::erase_if(codes, [&](const std::string& code) { return source.find("\"" + code + "\"") != std::string::npos; });
    return codes;
  }
};

TEST_P(ExampleSource, KnowsEveryCode) {
  EXPECT_THAT(missing(kInstallCodes), IsEmpty());
  EXPECT_THAT(missing(kRemovalCodes), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Files, ExampleSource, testing::Values("/Replies.h", "/swift/main.swift"));

}  // namespace
}  // namespace halvo
