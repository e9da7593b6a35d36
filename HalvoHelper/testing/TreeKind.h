// The file trees on which a test runs: INSTANTIATE_TEST_SUITE_P(On, Suite, kTreeKinds, treeKindName).
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "HalvoHelper/testing/FileTree.h"

namespace halvo {

struct TreeKind {
  const char* name;
  // The directory is used by a tree on the disk only.
  std::shared_ptr<const FileTree> (*make)(const std::string& directory);
};

inline void PrintTo(const TreeKind& kind, std::ostream* out) { *out << kind.name; }

inline const auto kTreeKinds = testing::Values(
    TreeKind{"Memory",
             [](const std::string&) -> std::shared_ptr<const FileTree> { return std::make_shared<InMemoryTree>(); }},
    TreeKind{"Disk", [](const std::string& directory) -> std::shared_ptr<const FileTree> {
               return std::make_shared<DiskTree>(directory);
             }});

inline std::string treeKindName(const testing::TestParamInfo<TreeKind>& info) { return info.param.name; }

}  // namespace halvo
