#pragma once

#include <boost/crc.hpp>
#include <cstdint>
#include <string>
#include <string_view>

namespace zyngrad {

/// Identifies the content of a file: its size and its CRC-64 (polynomial of ECMA-182, reflected).
struct Fingerprint {
  std::uint64_t size = 0, crc = 0;

  bool operator==(Fingerprint const& other) const { return size == other.size && crc == other.crc; }
};

Fingerprint FingerprintOfText(std::string const& text);

/// That of a text which comes in pieces.
class GrowingFingerprint {
 public:
  void Add(std::string_view piece) {
    crc_.process_bytes(piece.data(), piece.size());
    size_ += piece.size();
  }
  Fingerprint Now() const { return {size_, crc_.checksum()}; }

 private:
  boost::crc_optimal<64, 0x42F0E1EBA9EA3693, ~std::uint64_t{0}, ~std::uint64_t{0}, true, true> crc_;
  std::uint64_t size_ = 0;
};

/// Throws UsageError if the file cannot be read.
Fingerprint FingerprintOf(std::string const& file);

/// Returns the same after forcing the content from the system's memory to the disk. Throws UsageError if the disk
/// does not take it.
Fingerprint Settle(std::string const& file);

/// Forces a folder's list of names to the disk. Does nothing on file systems that cannot do that.
void SettleFolder(std::string const& folder);

}  // namespace zyngrad
