#include "sim/demo/TreeTable.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <sstream>

namespace halvo::sim {
namespace {

std::string describe(const FileState& state) {
  std::ostringstream words;
  words << std::oct << state.mode << std::dec;
  if (state.owner != 0 || state.group != 0) words << ", owner " << state.owner << ":" << state.group;
  constexpr std::array kOtherKinds = {"", ", folder", ", link", ", special file"};
  if (state.kind == FileState::Kind::file) words << ", " << state.size << " bytes";
  words << kOtherKinds.at(static_cast<std::size_t>(state.kind));
  return words.str();
}

// The state after, with what its description alone would not show to differ.
std::string describeAfter(const FileState& before, const FileState& after) {
  std::string words = describe(after);
  if (before.content != after.content) {
    words += ", other content";
  } else if (before.modified != after.modified) {
    words += ", written anew";
  }
  return words + (before.attributes == after.attributes ? "" : ", other attributes");
}

TreeRow rowOf(const std::string& path, const FileState* before, const FileState* after) {
  TreeRow row{.path = path, .depth = 0, .leads = false, .change = "same", .before = {}, .after = {}};
  if (before != nullptr) row.before = describe(*before);
  if (after != nullptr) row.after = before == nullptr ? describe(*after) : describeAfter(*before, *after);
  if (before == nullptr) {
    row.change = "added";
  } else if (after == nullptr) {
    row.change = "removed";
  } else if (*before != *after) {
    row.change = "changed";
  }
  return row;
}

const FileState* find(const TreeSnapshot& tree, const std::string& path) {
  const auto found = tree.find(path);
  return found == tree.end() ? nullptr : &found->second;
}

}  // namespace

std::vector<TreeRow> treeRows(const TreeSnapshot& before, const TreeSnapshot& after) {
  // Compared part by part, so that "/a/b" comes before "/a-b": a path sorts right behind its folder.
  std::map<std::filesystem::path, std::size_t> depths;
  for (const TreeSnapshot* tree : {&before, &after}) {
    for (const auto& entry : *tree) depths.emplace(entry.first, 0);
  }
  std::vector<TreeRow> rows;
  for (auto& [path, depth] : depths) {
    const auto parent = depths.find(path.parent_path());
    depth = parent == depths.end() ? 0 : parent->second + 1;
    rows.push_back(rowOf(path.string(), find(before, path.string()), find(after, path.string())));
    rows.back().depth = depth;
  }
  // From below: the next row above that is less deep holds what has been met last.
  std::size_t met = 0;
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    row->leads = row->depth < met;
    if (row->leads || row->change != "same") met = row->depth;
  }
  return rows;
}

}  // namespace halvo::sim
