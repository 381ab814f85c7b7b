#pragma once

#include <string>
#include <vector>

#include "tests/support/watch/FlushRecord.h"

namespace zyn_test {

/// What `call` writes to standard output, flush by flush.
template <typename Call>
std::vector<std::string> PrintedPieces(Call call) {
  FlushRecord const record;
  call();
  return record.Pieces();
}

/// The lines of a text, each with the empty lines behind it: the library prints these together.
inline std::vector<std::string> LinesWithTheirGaps(std::string const& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t const end = text.find_first_not_of('\n', text.find('\n', begin));
    lines.push_back(text.substr(begin, end - begin));
    begin = end == std::string::npos ? text.size() : end;
  }
  return lines;
}

}  // namespace zyn_test
