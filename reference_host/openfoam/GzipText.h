#pragma once

#include <memory>
#include <string>
#include <string_view>

struct z_stream_s;

namespace reference_host {

/// Makes the content of a gzip file from a text that comes in pieces.
class GzipPacker {
 public:
  GzipPacker();

  /// The next bytes of the file, perhaps none.
  std::string Pack(std::string_view text);

  /// The last bytes.
  std::string Finish();

 private:
  struct Ender {
    void operator()(z_stream_s* stream) const;
  };

  std::string Deflate(int flush);

  std::unique_ptr<z_stream_s, Ender> stream_;
};

/// The text as a gzip file has it.
std::string Gzipped(std::string const& text);

}  // namespace reference_host
