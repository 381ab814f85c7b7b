#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zyngrad {

inline std::string TestFile(const std::string& name) {
  return (std::filesystem::path(testing::TempDir()) / name).string();
}

inline std::string ReadAll(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// The values of an array, found as a reader does: offset from the XML, then a byte count before the values.
template <class T>
std::vector<T> ArrayOf(const std::string& content, const std::string& name) {
  const std::size_t tag = content.find("Name=\"" + name + '"');
  if (tag == std::string::npos) return {};
  const std::size_t offsetAt = content.find("offset=\"", tag) + 8;
  const std::string marker = "<AppendedData encoding=\"raw\">\n_";
  const std::size_t begin = content.find(marker) + marker.size() + std::stoul(content.substr(offsetAt));
  std::uint64_t nBytes = 0;
  std::memcpy(&nBytes, content.data() + begin, sizeof nBytes);
  std::vector<T> values(nBytes / sizeof(T));
  std::memcpy(values.data(), content.data() + begin + sizeof nBytes, nBytes);
  return values;
}

}  // namespace zyngrad
