#include "reference_host/mesh/MeshFile.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

std::string KindOf(std::filesystem::file_type type) {
  switch (type) {
    case std::filesystem::file_type::directory:
      return "a folder";
    case std::filesystem::file_type::fifo:
      return "a pipe (FIFO)";
    case std::filesystem::file_type::socket:
      return "a socket";
    case std::filesystem::file_type::character:
    case std::filesystem::file_type::block:
      return "a device";
    default:
      return "something else";
  }
}

std::size_t SizeOf(std::string const& name) {
  RequireRegularFile(name);
  std::error_code error;
  std::uintmax_t const size = std::filesystem::file_size(name, error);
  if (error) throw MeshError(name + ": " + error.message());
  return size;
}

class PlainFile : public FileBytes {
 public:
  explicit PlainFile(std::string const& name)
      : name_(name), size_(SizeOf(name)), stream_(name, std::ios::binary) {
    if (!stream_) throw MeshError(name_ + ": cannot be opened for reading");
  }

  std::size_t Size() const override { return size_; }

  void Read(std::size_t position, char* to, std::size_t n) override {
    if (n == 0) return;
    stream_.seekg(static_cast<std::streamoff>(position));
    stream_.read(to, static_cast<std::streamsize>(n));
    if (!stream_) throw MeshError(name_ + ": cannot be read to its end");
  }

 private:
  std::string name_;
  std::size_t size_;
  std::ifstream stream_;
};

}  // namespace

std::unique_ptr<FileBytes> OpenPlainFile(std::string const& name) {
  return std::make_unique<PlainFile>(name);
}

FileContent AllocateContent(std::string const& name, std::size_t size) {
  try {
    return {std::unique_ptr<char[]>(new char[size]), size};  // not make_unique, which would clear it first
  } catch (std::bad_alloc const&) {
    throw MeshError(name + ": " + std::to_string(size) + " bytes do not fit into memory");
  }
}

MeshFile::MeshFile(std::string name) : name_(std::move(name)) {
  content_ = AllocateContent(name_, SizeOf(name_));
  std::ifstream stream(name_, std::ios::binary);
  if (!stream) throw MeshError(name_ + ": cannot be opened for reading");
  stream.read(content_.bytes.get(), static_cast<std::streamsize>(content_.size));
  if (static_cast<std::size_t>(stream.gcount()) != content_.size)
    throw MeshError(name_ + ": cannot be read to its end");
}

MeshFile::MeshFile(std::string name, FileContent content, std::size_t firstByte)
    : name_(std::move(name)), content_(std::move(content)), firstByte_(firstByte) {}

MeshFile::MeshFile(std::string name, std::unique_ptr<FileBytes> bytes, std::size_t piece)
    : name_(std::move(name)), bytes_(std::move(bytes)), piece_(piece) {}

void MeshFile::Read(std::size_t position, char* to, std::size_t n) const {
  if (bytes_) {
    bytes_->Read(position, to, n);
  } else if (n > 0) {
    std::memcpy(to, content_.bytes.get() + position, n);
  }
}

/// The line of a position, from 1. A file in pieces is read again up to there: only failures ask.
std::size_t MeshFile::LineAt(std::size_t offset) const {
  std::size_t line = 1;
  FileContent const piece = AllocateContent(name_, std::min(offset, piece_));
  for (std::size_t at = 0; at < offset; at += piece_) {
    std::size_t const n = std::min(piece_, offset - at);
    Read(at, piece.bytes.get(), n);
    line += static_cast<std::size_t>(std::count(piece.bytes.get(), piece.bytes.get() + n, '\n'));
  }
  return line;
}

void MeshFile::Fail(std::size_t offset, std::string const& what) const {
  offset = std::min(offset, Size());
  if (placesByOffset_) throw MeshError(name_ + ": offset " + std::to_string(ByteAt(offset)) + ": " + what);
  throw MeshError(name_ + ":" + std::to_string(LineAt(offset)) + ": " + what);
}

void RequireRegularFile(std::string const& name) {
  std::error_code error;
  std::filesystem::file_status const status = std::filesystem::status(name, error);
  if (status.type() == std::filesystem::file_type::not_found) throw MeshError(name + ": no such file");
  if (!std::filesystem::status_known(status)) throw MeshError(name + ": " + error.message());
  if (!std::filesystem::is_regular_file(status)) {
    throw MeshError(name + ": " + KindOf(status.type()) + ", not a regular file");
  }
}

}  // namespace reference_host
