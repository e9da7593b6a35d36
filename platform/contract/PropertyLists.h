// Property lists for tests of readers, written byte by byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace halvo {

inline std::string bigEndian(std::size_t value, unsigned width) {
  std::string bytes;
  for (unsigned i = width; i > 0; --i) bytes.push_back(static_cast<char>(value >> (8U * (i - 1))));
  return bytes;
}

inline std::string xmlPropertyList(std::string_view content) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>)"
         R"(<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">)"
         R"(<plist version="1.0">)" +
         std::string(content) + "</plist>\n";
}

// How a container in a binary list names one of its members, by its place among the objects.
inline std::string binaryReference(std::size_t object) { return bigEndian(object, 4); }

// A binary list of these objects, each with its marker; the first one is the top level.
inline std::string binaryPropertyList(const std::vector<std::string>& objects) {
  std::string list = "bplist00";
  std::string positions;
  for (const std::string& object : objects) {
    positions += bigEndian(list.size(), 4);
    list += object;
  }
  const std::size_t tableAt = list.size();
  return list + positions + std::string(6, '\0') + "\x04\x04" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
         bigEndian(tableAt, 8);
}

// The same for a dictionary with one entry, followed by what its value needs.
inline std::string binaryDictionary(const std::string& key, const std::string& value,
                                    const std::vector<std::string>& more = {}) {
  std::vector<std::string> objects = {"\xD1" + binaryReference(1) + binaryReference(2), key, value};
  objects.insert(objects.end(), more.begin(), more.end());
  return binaryPropertyList(objects);
}

}  // namespace halvo
