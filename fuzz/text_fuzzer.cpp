// The text helpers of the settings, on buffers of exactly the size that they are promised.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/SettingsText.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  constexpr std::size_t kResult = 1024;
  std::string const text(reinterpret_cast<char const*>(data),
                         std::min(size, ::strnlen(reinterpret_cast<char const*>(data), size)));

  std::vector<char> line(text.begin(), text.end());
  line.push_back('\0');
  std::vector<char> key(line.size() + 1), value(line.size() + 1);
  int const hasEquals = SplitSettingsLine(line.data(), key.data(), value.data());
  if ((hasEquals == 1) != (text.find('=') != std::string::npos)) std::abort();
  if (std::strlen(key.data()) > text.size() || std::strlen(value.data()) > text.size()) std::abort();

  std::vector<char> result(kResult, 'x');
  ReplaceExtension(result.data(), ".rbf", line.data());
  std::size_t const length = ::strnlen(result.data(), kResult);
  if (length == kResult) std::abort();
  if (text.size() >= 4 && text.size() < kResult &&
      std::string(result.data(), length) != text.substr(0, text.size() - 4) + ".rbf")
    std::abort();
  return 0;
}
