#include "reference_host/openfoam/GzipText.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace reference_host {

void GzipPacker::Ender::operator()(z_stream_s* stream) const {
  deflateEnd(stream);
  delete stream;
}

GzipPacker::GzipPacker() : stream_(new z_stream()) {
  constexpr int kGzipFormat = 16;  // added to the size of the window
  if (deflateInit2(stream_.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzipFormat, 8,
                   Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
}

/// Packs all input that the stream has.
std::string GzipPacker::Deflate(int flush) {
  constexpr std::size_t kOutputBlock = std::size_t{1} << 16;
  std::string result;
  std::size_t nWritten = 0;
  do {
    result.resize(nWritten + kOutputBlock);
    stream_->next_out = reinterpret_cast<Bytef*>(result.data() + nWritten);
    stream_->avail_out = static_cast<unsigned>(kOutputBlock);
    deflate(stream_.get(), flush);
    nWritten += kOutputBlock - stream_->avail_out;
  } while (stream_->avail_out == 0);
  result.resize(nWritten);
  return result;
}

std::string GzipPacker::Pack(std::string_view text) {
  constexpr std::size_t kMostInput = std::numeric_limits<unsigned>::max() / 2;
  std::string result;
  for (std::size_t at = 0; at < text.size(); at += kMostInput) {
    // deflate does not change its input; its type has no const.
    stream_->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data() + at));
    stream_->avail_in = static_cast<unsigned>(std::min(kMostInput, text.size() - at));
    result += Deflate(Z_NO_FLUSH);
  }
  return result;
}

std::string GzipPacker::Finish() { return Deflate(Z_FINISH); }

std::string Gzipped(std::string const& text) {
  GzipPacker packer;
  std::string result = packer.Pack(text);
  return result + packer.Finish();
}

}  // namespace reference_host
