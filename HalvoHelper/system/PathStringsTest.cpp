#include "HalvoHelper/system/PathStrings.h"

#include <gtest/gtest.h>

#include <ostream>

namespace halvo {
namespace {

struct PathRow {
  const char* path;
  const char* last;
  const char* deletingLast;
  const char* appendingX;
};
void PrintTo(const PathRow& row, std::ostream* out) { *out << '"' << row.path << '"'; }

class PathStringsTable : public testing::TestWithParam<PathRow> {};

TEST_P(PathStringsTable, LastComponentIgnoresTrailingSlashes) {
  EXPECT_EQ(halvoLastPathComponent(GetParam().path), GetParam().last);
}

TEST_P(PathStringsTable, DeletingTheLastComponentKeepsWhatIsBeforeIt) {
  EXPECT_EQ(halvoDeletingLastPathComponent(GetParam().path), GetParam().deletingLast);
}

TEST_P(PathStringsTable, AppendingJoinsWithOneSlash) {
  EXPECT_EQ(halvoAppendingPathComponent(GetParam().path, "x"), GetParam().appendingX);
}

INSTANTIATE_TEST_SUITE_P(Paths, PathStringsTable,
                         testing::Values(PathRow{"", "", "", "x"},                       //
                                         PathRow{"/", "/", "/", "/x"},                   //
                                         PathRow{"//", "/", "/", "/x"},                  //
                                         PathRow{"/////", "/", "/", "/x"},               //
                                         PathRow{"a", "a", "", "a/x"},                   //
                                         PathRow{"a/", "a", "", "a/x"},                  //
                                         PathRow{"a//", "a", "", "a/x"},                 //
                                         PathRow{"/a", "a", "/", "/a/x"},                //
                                         PathRow{"/a/", "a", "/", "/a/x"},               //
                                         PathRow{"//a", "a", "/", "/a/x"},               //
                                         PathRow{"//a//", "a", "/", "/a/x"},             //
                                         PathRow{"///a", "a", "/", "/a/x"},              //
                                         PathRow{"a/b", "b", "a", "a/b/x"},              //
                                         PathRow{"a/b/", "b", "a", "a/b/x"},             //
                                         PathRow{"a///b", "b", "a", "a/b/x"},            //
                                         PathRow{"a//b//", "b", "a", "a/b/x"},           //
                                         PathRow{"/a/b", "b", "/a", "/a/b/x"},           //
                                         PathRow{"/a//b", "b", "/a", "/a/b/x"},          //
                                         PathRow{"/a//b//", "b", "/a", "/a/b/x"},        //
                                         PathRow{"/a//b//c", "c", "/a//b", "/a/b/c/x"},  //
                                         PathRow{".", ".", "", "./x"},                   //
                                         PathRow{"..", "..", "", "../x"},                //
                                         PathRow{"/.", ".", "/", "/./x"},                //
                                         PathRow{"/a/.", ".", "/a", "/a/./x"},           //
                                         PathRow{"/a/..", "..", "/a", "/a/../x"},        //
                                         PathRow{"/D/N.app/", "N.app", "/D", "/D/N.app/x"}));

struct AppendRow {
  const char* path;
  const char* component;
  const char* joined;
};
void PrintTo(const AppendRow& row, std::ostream* out) { *out << '"' << row.path << "\" + \"" << row.component << '"'; }

class AppendingTable : public testing::TestWithParam<AppendRow> {};

TEST_P(AppendingTable, CollapsesSlashesAndDropsTrailingOnes) {
  EXPECT_EQ(halvoAppendingPathComponent(GetParam().path, GetParam().component), GetParam().joined);
}

INSTANTIATE_TEST_SUITE_P(Paths, AppendingTable,
                         testing::Values(AppendRow{"/", "/x", "/x"},          //
                                         AppendRow{"", "x/", "x"},            //
                                         AppendRow{"", "/", "/"},             //
                                         AppendRow{"", "", ""},               //
                                         AppendRow{"/a", "", "/a"},           //
                                         AppendRow{"a", "//b//c/", "a/b/c"},  //
                                         AppendRow{"//a", "b", "/a/b"},       //
                                         AppendRow{"/a b", "c\n'd", "/a b/c\n'd"}));

TEST(PathStringsTest, TildesAndDotsAreOrdinaryText) {
  EXPECT_EQ(halvoLastPathComponent("~/x/../~ada"), "~ada");
  EXPECT_EQ(halvoDeletingLastPathComponent("~/x/../~ada"), "~/x/..");
}

}  // namespace
}  // namespace halvo
