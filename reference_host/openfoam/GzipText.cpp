#include "reference_host/openfoam/GzipText.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace reference_host {

std::string Gzipped(std::string const& text) {
  constexpr int kGzipFormat = 16;  // added to the size of the window
  z_stream stream = {};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzipFormat, 8,
                   Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  std::string result;
  constexpr std::size_t kMostInput = std::numeric_limits<unsigned>::max() / 2;
  constexpr std::size_t kOutputBlock = std::size_t{1} << 16;
  std::size_t nRead = 0, nWritten = 0;
  // deflate does not change its input; its type has no const.
  for (int state = Z_OK; state != Z_STREAM_END;) {
    if (stream.avail_in == 0) {
      stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data() + nRead));
      stream.avail_in = static_cast<unsigned>(std::min(kMostInput, text.size() - nRead));
      nRead += stream.avail_in;
    }
    result.resize(nWritten + kOutputBlock);
    stream.next_out = reinterpret_cast<Bytef*>(result.data() + nWritten);
    stream.avail_out = static_cast<unsigned>(kOutputBlock);
    state = deflate(&stream, nRead == text.size() ? Z_FINISH : Z_NO_FLUSH);
    nWritten += kOutputBlock - stream.avail_out;
  }
  deflateEnd(&stream);
  result.resize(nWritten);
  return result;
}

}  // namespace reference_host
