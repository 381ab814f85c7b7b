#include "foundation/SettingsText.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr std::size_t kNameSize = 1024;         // with the terminator
constexpr std::size_t kOldExtensionLength = 4;  // the point and three letters

// Copies the key and gives the position at which the scan stopped: that of the "=", or the end of the line.
std::size_t CopyKey(char const* line, char* key) {
  std::size_t i = 0;
  for (; line[i] != '\0' && line[i] != '='; ++i) {
    if (line[i] != ' ' && line[i] != '\n') *key++ = line[i];
  }
  *key = '\0';
  return i;
}

// The value begins at the first character behind the "=" that is not a blank, or, with none up to the end of
// the line, at the "=" itself.
char const* ValueBehind(char const* equalsSign) {
  char const* const value = equalsSign + 1 + std::strspn(equalsSign + 1, " ");
  return *value != '\0' ? value : equalsSign;
}

void CopyToNewline(char const* from, char* to) {
  std::size_t const length = std::strcspn(from, "\n");
  std::memcpy(to, from, length);
  to[length] = '\0';
}

}  // namespace

int SplitSettingsLine(char const* line, char* key, char* value) {
  std::size_t const stop = CopyKey(line, key);
  bool const hasEqualsSign = line[stop] == '=';
  if (key[0] == '\0') {
    value[0] = '\0';
  } else {
    // Without a "=" the scan stopped behind the last character.
    CopyToNewline(hasEqualsSign ? ValueBehind(line + stop) : line + stop - 1, value);
  }
  return hasEqualsSign ? 1 : 0;
}

int ReplaceExtension(char* result, char const* extension, char const* name) {
  char buffer[kNameSize];
  std::size_t const nameLength = ::strnlen(name, kNameSize - 1);
  std::size_t const stemLength = nameLength < kOldExtensionLength ? 0 : nameLength - kOldExtensionLength;
  std::size_t const extensionLength = ::strnlen(extension, kNameSize - 1 - stemLength);
  std::memcpy(buffer, name, stemLength);
  std::memcpy(buffer + stemLength, extension, extensionLength);
  buffer[stemLength + extensionLength] = '\0';
  // By way of the buffer, as `result` may be `name` or `extension`.
  std::memcpy(result, buffer, stemLength + extensionLength + 1);
  return 1;
}
