// Where a package lies that is named through links to folders which only a Mac has.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "client/ProtectedFolders.h"

namespace halvo {
namespace {

// What paths lead to; every other one leads nowhere.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the linker's wrapper reads it.
std::map<std::string, std::string> leads;

struct LinkRow {
  const char* name;
  const char* package;
  const char* folder;
  const char* real;
  bool isKept;
};

class FolderBehindALink : public testing::TestWithParam<LinkRow> {};

TEST_P(FolderBehindALink, CountsForWhatItIs) {
  leads = {{GetParam().folder, GetParam().real}};

  EXPECT_EQ(liesWhereDaemonsMayNotRead(GetParam().package), GetParam().isKept);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FolderBehindALink,
    testing::Values(LinkRow{"IntoAKeptOne", "/opt/in/a.pkg", "/opt/in", "/Users/ann/Downloads", true},
                    LinkRow{"OutOfAKeptOne", "/Users/ann/Downloads/a.pkg", "/Users/ann/Downloads", "/opt/out", false},
                    LinkRow{"AndBackFromThere", "/opt/in/../a.pkg", "/opt/in/..", "/Volumes/Stick", true}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace halvo

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker gives the names.
extern "C" {

char* __real_realpath(const char* path, char* resolved);
char* __wrap_realpath(const char* path, char* resolved) {
  const auto found = halvo::leads.find(path);
  return found == halvo::leads.end() ? __real_realpath(path, resolved) : ::strdup(found->second.c_str());
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
