#pragma once

#include <cstdint>
#include <string>

namespace zyngrad {

/// By what a file is known again: its size and the CRC-64 (polynomial of ECMA-182, reflected) of its content.
struct Fingerprint {
  std::uint64_t size = 0, crc = 0;

  bool operator==(Fingerprint const& other) const { return size == other.size && crc == other.crc; }
};

Fingerprint FingerprintOfText(std::string const& text);

/// Throws UsageError when the file cannot be read.
Fingerprint FingerprintOf(std::string const& file);

/// Likewise; and the content is on the disk, not in the system's memory alone, when it returns.
/// Throws UsageError when the disk does not take it.
Fingerprint Settle(std::string const& file);

/// The same for a folder's list of names. Does nothing where the file system cannot.
void SettleFolder(std::string const& folder);

}  // namespace zyngrad
