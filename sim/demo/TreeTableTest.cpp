#include "sim/demo/TreeTable.h"

#include <gmock/gmock.h>

namespace halvo::sim {
namespace {

using testing::ElementsAre;

constexpr FileState kFolder{.kind = FileState::Kind::directory, .mode = 0755};
constexpr FileState kFile{.kind = FileState::Kind::file, .mode = 0644, .size = 7, .modified = 1, .content = 1};

MATCHER_P2(Leads, path, leads, "") { return arg.path == path && arg.leads == leads; }

std::string afterOf(const FileState& before, const FileState& after) {
  return treeRows({{"/x", before}}, {{"/x", after}}).at(0).after;
}

TEST(TreeTableTest, PutsBothTreesSideBySide) {
  FileState larger = kFile;
  larger.size = 9;
  larger.content = 2;

  EXPECT_THAT(treeRows({{"/a", kFolder}, {"/a/changed", kFile}, {"/a/gone", kFile}, {"/a/same", kFile}},
                       {{"/a", kFolder}, {"/a/changed", larger}, {"/a/new", kFile}, {"/a/same", kFile}}),
              ElementsAre(TreeRow{"/a", 0, true, "same", "755, folder", "755, folder"},
                          TreeRow{"/a/changed", 1, false, "changed", "644, 7 bytes", "644, 9 bytes, other content"},
                          TreeRow{"/a/gone", 1, false, "removed", "644, 7 bytes", ""},
                          TreeRow{"/a/new", 1, false, "added", "", "644, 7 bytes"},
                          TreeRow{"/a/same", 1, false, "same", "644, 7 bytes", "644, 7 bytes"}));
}

TEST(TreeTableTest, WhatAFolderHoldsComesBeforeItsNeighbours) {
  const TreeSnapshot tree = {{"/a", kFolder}, {"/a-b", kFolder}, {"/a/b", kFile}};

  EXPECT_THAT(treeRows(tree, tree), ElementsAre(TreeRow{"/a", 0, false, "same", "755, folder", "755, folder"},
                                                TreeRow{"/a/b", 1, false, "same", "644, 7 bytes", "644, 7 bytes"},
                                                TreeRow{"/a-b", 0, false, "same", "755, folder", "755, folder"}));
}

TEST(TreeTableTest, DepthCountsFromTheFirstAncestorThatIsShown) {
  const auto rows = treeRows({{"/private/var/db", kFolder}, {"/private/var/db/halvo", kFolder}}, {});

  EXPECT_EQ(rows.at(0).depth, 0U);
  EXPECT_EQ(rows.at(1).depth, 1U);
}

TEST(TreeTableTest, AFolderLeadsToWhatChangedBelowIt) {
  const TreeSnapshot before = {{"/a", kFolder},   {"/a/b", kFolder}, {"/a/b/c", kFile}, {"/a/b/d", kFolder},
                               {"/a/e", kFolder}, {"/a/e/f", kFile}, {"/g", kFolder},   {"/g/h", kFile}};
  TreeSnapshot after = before;
  after.erase("/a/b/c");

  EXPECT_THAT(treeRows(before, after),
              ElementsAre(Leads("/a", true), Leads("/a/b", true), Leads("/a/b/c", false), Leads("/a/b/d", false),
                          Leads("/a/e", false), Leads("/a/e/f", false), Leads("/g", false), Leads("/g/h", false)));
}

TEST(TreeTableTest, AChangedFolderDoesNotMakeItsNeighbourLead) {
  FileState opened = kFolder;
  opened.mode = 0777;
  const TreeSnapshot before = {{"/a", kFolder}, {"/a/b", kFolder}, {"/a/c", kFolder}, {"/a/c/d", kFile}};

  EXPECT_THAT(treeRows(before, {{"/a", kFolder}, {"/a/b", kFolder}, {"/a/c", opened}}),
              ElementsAre(Leads("/a", true), Leads("/a/b", false), Leads("/a/c", true), Leads("/a/c/d", false)));
}

TEST(TreeTableTest, SaysWhatSizeAndModeDoNotShow) {
  FileState touched = kFile;
  touched.modified = 2;
  FileState given = kFile;
  given.owner = 501;
  given.group = 20;
  FileState marked = kFile;
  marked.attributes = 3;

  EXPECT_EQ(afterOf(kFile, touched), "644, 7 bytes, written anew");
  EXPECT_EQ(afterOf(kFile, given), "644, owner 501:20, 7 bytes");
  EXPECT_EQ(afterOf(kFile, marked), "644, 7 bytes, other attributes");
}

TEST(TreeTableTest, NamesLinksAndSpecialFiles) {
  EXPECT_EQ(afterOf(kFile, {.kind = FileState::Kind::link, .mode = 0777, .modified = 1, .content = 1}), "777, link");
  EXPECT_EQ(afterOf(kFile, {.kind = FileState::Kind::other, .mode = 0600, .modified = 1, .content = 1}),
            "600, special file");
}

}  // namespace
}  // namespace halvo::sim
