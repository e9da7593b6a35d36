// What every privileged file system promises is tested on a small tree: below /t there are a file and a directory.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "HalvoHelper/testing/TreeKind.h"

namespace halvo {

class PrivilegedFSContract : public testing::TestWithParam<TreeKind> {
 protected:
  PrivilegedFSContract() {
    tree_->write("/t/file", "f");
    tree_->write("/t/tree/a", "1");
    tree_->write("/t/tree/sub/b", "2");
  }

  [[nodiscard]] std::vector<std::string> listing(const std::string& path = "/t") const { return tree_->listing(path); }

  static auto isUntouched() {
    return testing::ElementsAre("/", "/file=f", "/tree/", "/tree/a=1", "/tree/sub/", "/tree/sub/b=2");
  }

  TemporaryDirectory directory_;
  std::shared_ptr<const FileTree> tree_ = GetParam().make(directory_.path());
  std::shared_ptr<const PrivilegedFS> fs_ = tree_->fs();
};

}  // namespace halvo
