// A manual page in its source form, for tests that hold it against what a program does.
#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace halvo {

inline std::string contentsOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// The first group of every match, in the order of the text.
inline std::vector<std::string> matchesIn(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  std::transform(std::sregex_iterator(text.begin(), text.end(), expression), std::sregex_iterator(),
                 std::back_inserter(found), [](const std::smatch& match) { return match.str(1); });
  return found;
}

// Between the heading of a section and the next one.
inline std::string sectionOf(const std::string& page, const std::string& heading) {
  const std::size_t begin = page.find(".Sh " + heading + "\n");
  return begin == std::string::npos ? "" : page.substr(begin, page.find("\n.Sh ", begin + 1) - begin);
}

// What the items of its lists are about.
inline std::vector<std::string> itemsOf(const std::string& text) { return matchesIn(text, "\n\\.It ([^\n]*)"); }

}  // namespace halvo
