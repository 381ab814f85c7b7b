#include "reference_host/MeshFile.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

/// Size of a regular file; anything else (a folder, a pipe, a device) has none that could be trusted.
std::size_t SizeOf(const std::string& name) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(name, error);
  if (!std::filesystem::exists(status)) throw MeshError(name + ": no such file");
  if (!std::filesystem::is_regular_file(status)) throw MeshError(name + ": not a regular file");
  const std::uintmax_t size = std::filesystem::file_size(name, error);
  if (error) throw MeshError(name + ": " + error.message());
  return size;
}

std::unique_ptr<char[]> Allocate(const std::string& name, std::size_t size) {
  try {
    return std::unique_ptr<char[]>(new char[size]);  // not make_unique: that would clear it first
  } catch (const std::bad_alloc&) {
    throw MeshError(name + ": " + std::to_string(size) + " bytes do not fit into memory");
  }
}

}  // namespace

MeshFile::MeshFile(std::string name) : name_(std::move(name)) {
  size_ = SizeOf(name_);
  content_ = Allocate(name_, size_);
  std::ifstream stream(name_, std::ios::binary);
  if (!stream) throw MeshError(name_ + ": cannot be opened for reading");
  stream.read(content_.get(), static_cast<std::streamsize>(size_));
  if (static_cast<std::size_t>(stream.gcount()) != size_)
    throw MeshError(name_ + ": cannot be read to its end");
}

void MeshFile::Fail(std::size_t offset, const std::string& what) const {
  offset = std::min(offset, size_);
  if (placesByOffset_) throw MeshError(name_ + ": offset " + std::to_string(offset) + ": " + what);
  const auto line = 1 + std::count(content_.get(), content_.get() + offset, '\n');
  throw MeshError(name_ + ":" + std::to_string(line) + ": " + what);
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::string shown(text.substr(0, kLongest));
  for (char& c : shown) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) c = '?';
  }
  return "'" + shown + (text.size() > kLongest ? "...'" : "'");
}

}  // namespace reference_host
