#include "foundation/SettingsText.h"

#include <cstddef>
#include <cstring>

#include "foundation/Status.h"

namespace {

constexpr std::size_t kNameSize = 1024;         // with the terminator
constexpr std::size_t kOldExtensionLength = 4;  // the point and three letters

// Copies the first `stop` characters of the line without blanks and newlines. The key may be the line itself: writing
// never gets ahead of reading.
void CopyKey(char const* line, std::size_t stop, char* key) {
  for (std::size_t i = 0; i < stop; ++i) {
    if (line[i] != ' ' && line[i] != '\n') *key++ = line[i];
  }
  *key = '\0';
}

void CopyToNewline(char const* from, char* to) {
  std::size_t const length = std::strcspn(from, "\n");
  std::memmove(to, from, length);
  to[length] = '\0';
}

// The value of a line without "=": its last character, unless that is the newline.
void CopyLast(char last, char* to) {
  to[0] = last == '\n' ? '\0' : last;
  to[1] = '\0';
}

// From the first character behind the "=" that is not a blank. If there is none up to the end of the line, from the
// "=" itself, which may be overwritten by now.
void CopyValueBehind(char const* equalsSign, char* to) {
  char const* const behind = equalsSign + 1;
  char const* const begin = behind + std::strspn(behind, " ");
  if (*begin != '\0') {
    CopyToNewline(begin, to);
  } else {
    std::memmove(to + 1, behind, static_cast<std::size_t>(begin - behind) + 1);
    to[0] = '=';
  }
}

}  // namespace

int SplitSettingsLine(char const* line, char* key, char* value) {
  // Writing the key may overwrite the line up to its "=", so that part is examined first.
  std::size_t const stop = std::strcspn(line, "=");
  bool const hasEqualsSign = line[stop] == '=';
  char const last = stop > 0 ? line[stop - 1] : '\0';
  CopyKey(line, stop, key);
  if (key[0] == '\0') {
    value[0] = '\0';
  } else if (!hasEqualsSign) {
    CopyLast(last, value);
  } else {
    CopyValueBehind(line + stop, value);
  }
  return hasEqualsSign ? Status::kSuccess : Status::kNotFound;
}

int ReplaceExtension(char* result, char const* extension, char const* name) {
  char buffer[kNameSize];
  std::size_t const nameLength = ::strnlen(name, kNameSize - 1);
  std::size_t const stemLength = nameLength < kOldExtensionLength ? 0 : nameLength - kOldExtensionLength;
  std::size_t const extensionLength = ::strnlen(extension, kNameSize - 1 - stemLength);
  std::memcpy(buffer, name, stemLength);
  std::memcpy(buffer + stemLength, extension, extensionLength);
  buffer[stemLength + extensionLength] = '\0';
  // From the buffer, since `result` may be `name` or `extension`.
  std::memcpy(result, buffer, stemLength + extensionLength + 1);
  return Status::kSuccess;
}
