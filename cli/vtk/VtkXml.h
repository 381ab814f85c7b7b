#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace zyngrad {

/// Values on the cells or points of a grid, nComponents for each of them.
struct VtkArray {
  std::string name;
  int nComponents = 1;
  std::variant<std::vector<double>, std::vector<std::int32_t>, std::vector<std::int64_t>> values;
  std::vector<std::string> componentNames = {};  ///< shown by viewers instead of their own; may be empty
};

/// Builds a file of the VTK XML formats: a text, followed by the arrays that it refers to, as raw bytes in the
/// machine's byte order.
class VtkXml {
 public:
  void Line(std::string const& text) { text_ += text + '\n'; }

  /// Describes an array, which is borrowed until Write.
  template <class T>
  void Array(std::string const& name, int nComponents, std::vector<T> const& values,
             std::vector<std::string> const& componentNames = {});
  void Array(VtkArray const& array);

  /// Writes the file. Throws UsageError if that fails.
  void Write(std::string const& file, char const* gridType) const;

 private:
  /// An array in the appended section: a 64-bit byte count and the bytes.
  struct Block {
    void const* data;
    std::uint64_t nBytes;
  };

  std::string text_;
  std::vector<Block> blocks_;
  std::uint64_t offset_ = 0;
};

/// Writes the index of pieces with the same arrays. Throws UsageError if that fails.
/// @param[in] gridType   of the pieces, "UnstructuredGrid" or "PolyData"
/// @param[in] pointData  arrays of the points; may be empty
/// @param[in] cellData   arrays of the cells; may be empty
/// @param[in] pieces     relative to the index file's folder
void WritePieceIndex(std::string const& file, std::string const& gridType,
                     std::vector<VtkArray> const& pointData, std::vector<VtkArray> const& cellData,
                     std::vector<std::string> const& pieces);

}  // namespace zyngrad
