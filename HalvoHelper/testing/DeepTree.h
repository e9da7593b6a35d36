// Trees that are deeper than a path can say, and a thread that has little room to walk them.
#pragma once

#include <functional>
#include <string>

namespace halvo {

// Makes that many directories of one name inside each other, in an existing directory, and a file in the last one.
void makeChain(const std::string& directory, const std::string& name, int levels);

// Runs `work` on a thread whose stack holds 256 KiB, and answers what it answers.
[[nodiscard]] bool onSmallStack(const std::function<bool()>& work);

}  // namespace halvo
