#include "cli/Fingerprint.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/crc.hpp>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "cli/OutputNames.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

using Crc = boost::crc_optimal<64, 0x42F0E1EBA9EA3693, ~std::uint64_t{0}, ~std::uint64_t{0}, true, true>;

[[noreturn]] void Fail(const std::string& verb, const std::string& file, int reason) {
  throw UsageError("cannot " + verb + ' ' + QuotedPath(file) + ": " + std::strerror(reason));
}

/// A file or folder that is open for reading.
class Opened {
 public:
  Opened(const std::string& file, int flags)
      : descriptor_(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags)) {
    if (descriptor_ < 0) Fail("read", file, errno);
  }
  ~Opened() { close(descriptor_); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

Fingerprint Read(const Opened& in, const std::string& file) {
  constexpr std::size_t kBlock = 1 << 16;
  std::vector<char> block(kBlock);
  Crc crc;
  Fingerprint found;
  for (;;) {
    const ssize_t size = read(in.descriptor(), block.data(), block.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) Fail("read", file, errno);
    if (size == 0) break;
    crc.process_bytes(block.data(), static_cast<std::size_t>(size));
    found.size += static_cast<std::uint64_t>(size);
  }
  found.crc = crc.checksum();
  return found;
}

/// Some file systems have no such thing, for folders above all.
void Sync(const Opened& in, const std::string& file) {
  while (fsync(in.descriptor()) != 0) {
    if (errno == EINTR) continue;
    if (errno == EINVAL || errno == ENOTSUP || errno == EROFS) return;
    Fail("write", file, errno);
  }
}

}  // namespace

Fingerprint FingerprintOfText(const std::string& text) {
  Crc crc;
  crc.process_bytes(text.data(), text.size());
  return {text.size(), crc.checksum()};
}

Fingerprint FingerprintOf(const std::string& file) { return Read(Opened(file, 0), file); }

Fingerprint Settle(const std::string& file) {
  const Opened in(file, 0);
  const Fingerprint found = Read(in, file);
  Sync(in, file);
  return found;
}

void SettleFolder(const std::string& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
  if (descriptor < 0) return;  // one that may be written but not read
  [[maybe_unused]] const int done = fsync(descriptor);
  close(descriptor);
}

}  // namespace zyngrad
