#include "HalvoHelper/system/LoginUsers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "HalvoHelper/testing/ScriptedProcessRunner.h"

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Uids = std::vector<std::int64_t>;

struct ListingRow {
  std::string listing;
  Uids uids;
};
void PrintTo(const ListingRow& row, std::ostream* out) { *out << testing::PrintToString(row.listing); }

class ListingTable : public testing::TestWithParam<ListingRow> {};

TEST_P(ListingTable, GivesTheOrdinaryAccounts) { EXPECT_EQ(halvoParseLoginUids(GetParam().listing), GetParam().uids); }

INSTANTIATE_TEST_SUITE_P(
    Accounts, ListingTable,
    testing::Values(ListingRow{"root 0\ndaemon  1\n_mbsetupuser   89\nnobody  -2\nada   501\ngrace 502\n", {501, 502}},
                    ListingRow{"grace 502\nada 501", {501, 502}},                                              //
                    ListingRow{"ada 501\nada-alias 501\n", {501}},                                             //
                    ListingRow{"a 499\nb 500\nc 501", {500, 501}},                                             //
                    ListingRow{"a +501\nb 00502\nc -501", {501, 502}},                                         //
                    ListingRow{"big 9223372036854775807\nbigger 9223372036854775808", {9223372036854775807}},  //
                    ListingRow{"501\n", {501}},                                                                //
                    ListingRow{"ada lovelace 501", {501}},                                                     //
                    ListingRow{"501 ada\n502 x503\n504.0\n0x1F5\n5 0 5", {}},                                  //
                    ListingRow{"", {}},                                                                        //
                    ListingRow{"\n\n   \n\t\n", {}},                                                           //
                    ListingRow{"spawn failed: No such file or directory", {}},                                 //
                    ListingRow{"DS Error: -14090 (eDSAuthFailed)", {}}));

INSTANTIATE_TEST_SUITE_P(EveryUnicodeLineEnd, ListingTable,
                         testing::Values(ListingRow{"a 501\nb 502", {501, 502}},        //
                                         ListingRow{"a 501\vb 502", {501, 502}},        //
                                         ListingRow{"a 501\fb 502", {501, 502}},        //
                                         ListingRow{"a 501\rb 502", {501, 502}},        //
                                         ListingRow{"a 501\r\nb 502\r\n", {501, 502}},  //
                                         ListingRow{"a 501\u0085b 502", {501, 502}},    //
                                         ListingRow{"a 501\u2028b 502", {501, 502}},    //
                                         ListingRow{"a 501\u2029b 502", {501, 502}}));

// Each lies just outside the line ends. A tab is a blank, and the others belong to the word.
INSTANTIATE_TEST_SUITE_P(WhatOnlyLooksLikeALineEnd, ListingTable,
                         testing::Values(ListingRow{"a 501\tb 502", {502}},      //
                                         ListingRow{"a 501\016b 502", {502}},    //
                                         ListingRow{"a 501\u0084b 502", {502}},  //
                                         ListingRow{"a 501\u0086b 502", {502}},  //
                                         ListingRow{"a 501\u2027b 502", {502}},  //
                                         ListingRow{"a 501\u202Ab 502", {502}}));

INSTANTIATE_TEST_SUITE_P(
    EveryUnicodeBlank, ListingTable,
    testing::Values(ListingRow{"a\t501", {501}}, ListingRow{"a \t  501 \t", {501}}, ListingRow{"a\u00A0501", {501}},
                    ListingRow{"a\u1680501", {501}}, ListingRow{"a\u2000501", {501}}, ListingRow{"a\u2001501", {501}},
                    ListingRow{"a\u2002501", {501}}, ListingRow{"a\u2003501", {501}}, ListingRow{"a\u2004501", {501}},
                    ListingRow{"a\u2005501", {501}}, ListingRow{"a\u2006501", {501}}, ListingRow{"a\u2007501", {501}},
                    ListingRow{"a\u2008501", {501}}, ListingRow{"a\u2009501", {501}}, ListingRow{"a\u200A501", {501}},
                    ListingRow{"a\u202F501", {501}}, ListingRow{"a\u205F501", {501}}, ListingRow{"a\u3000501", {501}}));

INSTANTIATE_TEST_SUITE_P(WhatOnlyLooksBlank, ListingTable,
                         testing::Values(ListingRow{"a\u200B501", {}},  // a zero-width space is no White_Space
                                         ListingRow{"a\u180E501", {}},  //
                                         ListingRow{"a\uFEFF501", {}}));

TEST(LoginUsersTest, AsksTheDirectoryOnceAndLaunchdForEachOrdinaryAccount) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = 0, .output = "grace 502\nroot 0\nada 501\n"},
                     {.code = 113, .output = ""},
                     {.code = 0, .output = "gui/502 = {"}};

  EXPECT_THAT(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner), ElementsAre(502));

  EXPECT_THAT(runner->runs, ElementsAre(ElementsAre("/usr/bin/dscl", ".", "-list", "/Users", "UniqueID"),
                                        ElementsAre("/bin/launchctl", "print", "gui/501"),
                                        ElementsAre("/bin/launchctl", "print", "gui/502")));
}

TEST(LoginUsersTest, TheListingCountsWhateverItsStatus) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = 78, .output = "ada 501\n"}, {.code = 0, .output = ""}};

  EXPECT_THAT(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner), ElementsAre(501));
}

TEST(LoginUsersTest, AMissingDirectoryToolFindsNobodyAndAsksNoFurther) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = -1, .output = "spawn failed: No such file or directory"}};

  EXPECT_THAT(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner), IsEmpty());

  EXPECT_EQ(runner->runs.size(), 1U);
}

TEST(LoginUsersTest, NobodyIsLoggedInWhenNoDomainAnswers) {
  const auto runner = std::make_shared<ScriptedProcessRunner>();
  runner->replies = {{.code = 0, .output = "ada 501\ngrace 502\n"},
                     {.code = 113, .output = ""},
                     {.code = -1, .output = "spawn failed: x"}};

  EXPECT_THAT(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner), IsEmpty());
}

TEST(LoginUsersTest, TheReplyListsTheIdsInTheGivenOrder) {
  EXPECT_EQ(halvoGuiDomainsJSON({501, 502}), R"({"uids":[501,502]})");
  EXPECT_EQ(halvoGuiDomainsJSON({502, 501, 501, -2}), R"({"uids":[502,501,501,-2]})");
  EXPECT_EQ(halvoGuiDomainsJSON({501}), R"({"uids":[501]})");
  EXPECT_EQ(halvoGuiDomainsJSON({}), R"({"uids":[]})");
}

}  // namespace
}  // namespace halvo
