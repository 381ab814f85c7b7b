#include "reference_host/parallel/MeshPartBytes.h"

#include <cassert>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <type_traits>

namespace reference_host {
namespace {

// One list of the fields serves all three purposes: counting the bytes, writing and reading them.
template <class Archive, class Part>
void VisitFields(Archive& archive, Part& part) {
  archive.Number(part.part);
  archive.Number(part.nParts);
  archive.Array(part.points);
  archive.Array(part.globalNode);
  archive.Number(part.nOwned);
  archive.Array(part.globalCell);
  archive.Array(part.haloPart);
  archive.Array(part.haloPeriod);
  archive.Array(part.shifts);
  archive.Array(part.haloNodeStart);
  archive.Array(part.haloNode);
  archive.Array(part.faceStart);
  archive.Array(part.faceNode);
  archive.Array(part.owner);
  archive.Array(part.neighbour);
  archive.Array(part.facePatch);
  archive.Patches(part.patches);
}

constexpr int kNoGroup = -1;

/// Appends the fields that it visits to the bytes, or only counts the bytes.
class Writer {
 public:
  explicit Writer(std::vector<char>* bytes) : bytes_(bytes) {}

  std::size_t size() const { return size_; }

  template <class T>
  void Number(T const& number) {
    Append(&number, sizeof(T));
  }

  template <class Container>
  void Array(Container const& array) {
    static_assert(std::is_trivially_copyable_v<typename Container::value_type>);
    Number(array.size());
    Append(array.data(), array.size() * sizeof(typename Container::value_type));
  }

  void Patches(std::vector<Patch> const& patches) {
    Number(patches.size());
    for (Patch const& patch : patches) {
      Array(patch.name);
      Array(patch.type);
      Array(patch.reason);
      Array(patch.partners);
      Number(patch.group ? static_cast<int>(*patch.group) : kNoGroup);
    }
  }

 private:
  void Append(void const* data, std::size_t size) {
    size_ += size;
    char const* begin = static_cast<char const*>(data);
    if (bytes_ != nullptr && size > 0) bytes_->insert(bytes_->end(), begin, begin + size);
  }

  std::vector<char>* bytes_;
  std::size_t size_ = 0;
};

/// Fills the fields that it visits from the bytes, in the same order.
class Reader {
 public:
  explicit Reader(std::vector<char> const& bytes) : bytes_(bytes) {}

  template <class T>
  void Number(T& number) {
    Take(&number, sizeof(T));
  }

  template <class Container>
  void Array(Container& array) {
    std::size_t size = 0;
    Number(size);
    array.resize(size);
    Take(array.data(), size * sizeof(typename Container::value_type));
  }

  void Patches(std::vector<Patch>& patches) {
    std::size_t size = 0;
    Number(size);
    patches.resize(size);
    for (Patch& patch : patches) {
      Array(patch.name);
      Array(patch.type);
      Array(patch.reason);
      Array(patch.partners);
      int group = kNoGroup;
      Number(group);
      if (group != kNoGroup) patch.group = static_cast<BoundaryGroup>(group);
    }
  }

 private:
  void Take(void* data, std::size_t size) {
    assert(next_ + size <= bytes_.size());
    if (size > 0) std::memcpy(data, bytes_.data() + next_, size);
    next_ += size;
  }

  std::vector<char> const& bytes_;
  std::size_t next_ = 0;
};

}  // namespace

std::vector<char> PackMeshPart(MeshPart const& part) {
  Writer counter(nullptr);
  VisitFields(counter, part);
  std::vector<char> bytes;
  bytes.reserve(counter.size());
  Writer writer(&bytes);
  VisitFields(writer, part);
  return bytes;
}

MeshPart UnpackMeshPart(std::vector<char> const& bytes) {
  MeshPart part;
  Reader reader(bytes);
  VisitFields(reader, part);
  return part;
}

}  // namespace reference_host
