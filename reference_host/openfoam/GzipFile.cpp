#include "reference_host/openfoam/GzipFile.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <utility>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

constexpr std::size_t kAlwaysAllowed = std::size_t{256} << 20;
constexpr std::size_t kMostRatio = 100;
constexpr std::size_t kBestRatio = 1032;  // of the format: 258 bytes from two bits
constexpr std::size_t kBuffer = std::size_t{128} << 10;
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;  // zlib counts in int

std::size_t SizeOf(std::string const& name) {
  std::error_code error;
  std::uintmax_t const size = std::filesystem::file_size(name, error);
  if (error) throw MeshError(name + ": " + error.message());
  return size;
}

/// The size that the last four bytes of a compressed file state: that of the last part in it, modulo 2^32.
std::size_t StatedSize(std::string const& name, std::size_t size) {
  if (size < 4) return 0;
  std::ifstream stream(name, std::ios::binary);
  stream.seekg(static_cast<std::streamoff>(size - 4));
  unsigned char bytes[4] = {};
  stream.read(reinterpret_cast<char*>(bytes), 4);
  std::size_t stated = 0;
  for (int i = 3; i >= 0; --i) stated = 256 * stated + bytes[i];
  return stated;
}

class GzipBytes : public FileBytes {
 public:
  explicit GzipBytes(std::string const& name) : name_(name), file_(std::make_unique<GzipFile>(name)) {
    FileContent const buffer = AllocateContent(name_, kBuffer);
    while (file_->Fill(buffer.bytes.get(), buffer.size) > 0) continue;
    size_ = file_->Position();
  }

  std::size_t Size() const override { return size_; }

  void Read(std::size_t position, char* to, std::size_t n) override {
    if (n == 0) return;
    if (position < file_->Position()) file_ = std::make_unique<GzipFile>(name_);
    file_->Skip(position - file_->Position());
    if (file_->Fill(to, n) != n) throw MeshError(name_ + ": cannot be read to its end");
  }

 private:
  std::string name_;
  std::unique_ptr<GzipFile> file_;
  std::size_t size_ = 0;
};

}  // namespace

void GzipFile::Closer::operator()(gzFile_s* file) const { gzclose_r(file); }

GzipFile::GzipFile(std::string name) : name_(std::move(name)) {
  RequireRegularFile(name_);
  std::size_t const size = SizeOf(name_);
  errno = 0;
  file_.reset(gzopen(name_.c_str(), "rb"));
  if (!file_) throw MeshError(name_ + ": cannot be opened for reading");
  gzbuffer(file_.get(), kBuffer);
  bool const isPlain = gzdirect(file_.get()) == 1;
  mostBytes_ = isPlain ? size : std::max(kAlwaysAllowed, kMostRatio * size);
  likelyBytes_ = isPlain ? size : std::min({mostBytes_, kBestRatio * size, StatedSize(name_, size)});
}

void GzipFile::FailRead() const {
  int code = Z_OK;
  char const* const text = gzerror(file_.get(), &code);
  if (code == Z_BUF_ERROR) throw MeshError(name_ + ": the compressed file is truncated");
  if (code == Z_DATA_ERROR) throw MeshError(name_ + ": the compressed file is damaged");
  throw MeshError(name_ + ": cannot be read: " + (code == Z_ERRNO ? std::strerror(errno) : text));
}

std::size_t GzipFile::Fill(char* to, std::size_t n) {
  std::size_t nRead = 0;
  while (nRead < n) {
    auto const wanted = static_cast<unsigned>(std::min(n - nRead, kMostAtOnce));
    int const got = gzread(file_.get(), to + nRead, wanted);
    if (got < 0) FailRead();
    if (got == 0) {
      int code = Z_OK;
      gzerror(file_.get(), &code);
      if (code != Z_OK && code != Z_STREAM_END) FailRead();
      break;
    }
    nRead += static_cast<std::size_t>(got);
  }
  position_ += nRead;
  if (position_ > mostBytes_) {
    throw MeshError(name_ + ": unpacks to more than " + std::to_string(mostBytes_) +
                    " bytes, far more than files of numbers do; unpack it with gunzip if it is sound");
  }
  return nRead;
}

FileContent GzipFile::Read(std::size_t n) {
  // One byte beyond what is allowed shows that there is more.
  n = std::min(n, mostBytes_ - std::min(position_, mostBytes_) + 1);
  std::size_t const likely = likelyBytes_ - std::min(position_, likelyBytes_) + 1;
  FileContent content = AllocateContent(name_, std::min(n, likely));
  std::size_t size = Fill(content.bytes.get(), content.size);
  while (size == content.size && size < n) {
    FileContent larger = AllocateContent(name_, std::min(n, 2 * size + kBuffer));
    std::memcpy(larger.bytes.get(), content.bytes.get(), size);
    content = std::move(larger);
    size += Fill(content.bytes.get() + size, content.size - size);
  }
  content.size = size;
  return content;
}

FileContent GzipFile::ReadRest() { return Read(std::numeric_limits<std::size_t>::max()); }

void GzipFile::Skip(std::size_t n) {
  if (gzdirect(file_.get()) == 1) {
    if (gzseek(file_.get(), static_cast<z_off_t>(n), SEEK_CUR) < 0) FailRead();
    position_ += n;
    return;
  }
  FileContent buffer = AllocateContent(name_, std::min(n, kBuffer));
  for (std::size_t left = n; left > 0;) {
    std::size_t const nRead = Fill(buffer.bytes.get(), std::min(left, buffer.size));
    if (nRead == 0) return;
    left -= nRead;
  }
}

std::unique_ptr<FileBytes> OpenGzipFile(std::string const& name) { return std::make_unique<GzipBytes>(name); }

}  // namespace reference_host
