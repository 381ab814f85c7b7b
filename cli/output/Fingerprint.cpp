#include "cli/output/Fingerprint.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

[[noreturn]] void Fail(std::string const& verb, std::string const& file, int reason) {
  throw UsageError("cannot " + verb + ' ' + QuotedPath(file) + ": " + std::strerror(reason));
}

/// A file or folder that is open for reading.
class Opened {
 public:
  Opened(std::string const& file, int flags)
      : descriptor_(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags)) {
    if (descriptor_ < 0) Fail("read", file, errno);
  }
  ~Opened() { close(descriptor_); }
  Opened(Opened const&) = delete;
  Opened& operator=(Opened const&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

Fingerprint Read(Opened const& in, std::string const& file) {
  constexpr std::size_t kBlock = 1 << 16;
  std::vector<char> block(kBlock);
  GrowingFingerprint found;
  for (;;) {
    ssize_t const size = read(in.descriptor(), block.data(), block.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) Fail("read", file, errno);
    if (size == 0) break;
    found.Add({block.data(), static_cast<std::size_t>(size)});
  }
  return found.Now();
}

/// Some file systems cannot do this, especially for folders.
void Sync(Opened const& in, std::string const& file) {
  while (fsync(in.descriptor()) != 0) {
    if (errno == EINTR) continue;
    if (errno == EINVAL || errno == ENOTSUP || errno == EROFS) return;
    Fail("write", file, errno);
  }
}

}  // namespace

Fingerprint FingerprintOfText(std::string const& text) {
  GrowingFingerprint found;
  found.Add(text);
  return found.Now();
}

Fingerprint FingerprintOf(std::string const& file) { return Read(Opened(file, 0), file); }

Fingerprint Settle(std::string const& file) {
  Opened const in(file, 0);
  Fingerprint const found = Read(in, file);
  Sync(in, file);
  return found;
}

void SettleFolder(std::string const& folder) {
  int const descriptor = open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
  if (descriptor < 0) return;  // the folder may be writable but not readable
  [[maybe_unused]] int const done = fsync(descriptor);
  close(descriptor);
}

}  // namespace zyngrad
