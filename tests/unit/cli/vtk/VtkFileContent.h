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

inline std::string TestFile(std::string const& name) {
  return (std::filesystem::path(testing::TempDir()) / name).string();
}

inline std::string ReadAll(std::string const& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// The values of an array, found as a reader does: offset from the XML, then a byte count before the values.
template <class T>
std::vector<T> ArrayOf(std::string const& content, std::string const& name) {
  std::size_t const tag = content.find("Name=\"" + name + '"');
  if (tag == std::string::npos) return {};
  std::size_t const offsetAt = content.find("offset=\"", tag) + 8;
  std::string const marker = "<AppendedData encoding=\"raw\">\n_";
  std::size_t const begin = content.find(marker) + marker.size() + std::stoul(content.substr(offsetAt));
  std::uint64_t nBytes = 0;
  std::memcpy(&nBytes, content.data() + begin, sizeof nBytes);
  std::vector<T> values(nBytes / sizeof(T));
  std::memcpy(values.data(), content.data() + begin + sizeof nBytes, nBytes);
  return values;
}

}  // namespace zyngrad
