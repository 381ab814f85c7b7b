#pragma once

#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

/// Writes files of OpenFOAM in binary form, with numbers of any size, and compressed or collated. This machine's
/// OpenFOAM writes labels of 32 and scalars of 64 bits only.
namespace foam_test {

struct Sizes {
  int labelBytes = 4;
  int scalarBytes = 8;
};

inline std::string BinaryHeader(std::string const& className, Sizes const& sizes = {}) {
  return "FoamFile\n{\n    version 2.0;\n    format binary;\n    class " + className +
         ";\n    arch \"LSB;label=" + std::to_string(8 * sizes.labelBytes) +
         ";scalar=" + std::to_string(8 * sizes.scalarBytes) + "\";\n}\n\n";
}

template <class Number>
void AppendBytes(std::string& bytes, Number number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof number);
}

/// "N (bytes)"; an empty list is "0" alone.
inline std::string BinaryList(std::size_t n, std::string const& bytes) {
  return std::to_string(n) + "\n" + (n == 0 ? "" : "(" + bytes + ")");
}

template <class Integer>
std::string BinaryLabels(std::vector<Integer> const& labels, Sizes const& sizes = {}) {
  std::string bytes;
  for (Integer const label : labels) {
    if (sizes.labelBytes == 8) {
      AppendBytes(bytes, static_cast<std::int64_t>(label));
    } else {
      AppendBytes(bytes, static_cast<std::int32_t>(label));
    }
  }
  return BinaryList(labels.size(), bytes);
}

/// @param[in] nComponents  of an item: the list has so many numbers for each
inline std::string BinaryReals(std::vector<double> const& reals, std::size_t nComponents,
                               Sizes const& sizes = {}) {
  std::string bytes;
  for (double const real : reals) {
    if (sizes.scalarBytes == 8) {
      AppendBytes(bytes, real);
    } else {
      AppendBytes(bytes, static_cast<float>(real));
    }
  }
  return BinaryList(reals.size() / nComponents, bytes);
}

inline std::string BinaryPoints(reference_host::FaceMesh const& mesh, Sizes const& sizes = {}) {
  std::vector<double> coordinates;
  for (auto const& point : mesh.points) coordinates.insert(coordinates.end(), point.begin(), point.end());
  return BinaryHeader("vectorField", sizes) + BinaryReals(coordinates, 3, sizes) + "\n";
}

/// faceCompactList: the starts of the faces, then their nodes.
inline std::string BinaryFaces(reference_host::FaceMesh const& mesh, Sizes const& sizes = {}) {
  return BinaryHeader("faceCompactList", sizes) + BinaryLabels(mesh.faceStart, sizes) + "\n" +
         BinaryLabels(mesh.faceNode, sizes) + "\n";
}

/// The same bytes as gzip packs them.
inline std::string Compressed(std::string const& content) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, content.size()) + 32, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  stream.avail_in = static_cast<uInt>(content.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(packed.size() - stream.avail_out);
  deflateEnd(&stream);
  return packed;
}

/// The pieces of all processors in one file.
inline std::string Collated(std::vector<std::string> const& pieces) {
  std::string content =
      "FoamFile\n{\n    version 2.0;\n    format binary;\n    class decomposedBlockData;\n}\n";
  for (std::size_t p = 0; p < pieces.size(); ++p) {
    content += "\n// Processor" + std::to_string(p) + "\n\n" + std::to_string(pieces[p].size()) + "\n(" +
               pieces[p] + ")\n";
  }
  return content;
}

}  // namespace foam_test
