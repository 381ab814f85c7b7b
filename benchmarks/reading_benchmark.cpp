// How fast OpenFOAM's files are read: the mesh of a box and a vector field on it, in text and in binary form, compressed
// and not.
//
//   reading_benchmark CELLS ROUNDS FOLDER
//   reading_benchmark write CELLS FOLDER
//
// Writes the files to FOLDER/reading, which must not exist, and removes it at the end: 1,000,000 cells take 700 MB.
// Rates are those of the fastest of the rounds, in MB of unpacked files per second of the processor. Prints lines for
// run.sh: see Report.h. The second form only writes the binary case, to FOLDER, which must not exist, for case_run.py.

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/box/BoxSpec.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/FoamFieldWriter.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace {

namespace fs = std::filesystem;

using benchmarks::Report;
using benchmarks::Seconds;
using reference_host::FaceMesh;
using reference_host::FoamFormat;
using reference_host::Point;

constexpr double kMegabyte = 1e6;

template <class Number>
void AppendBytes(std::string& text, Number number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  text.append(bytes, sizeof number);
}

/// Writes one case in one format and counts the bytes before they are compressed.
class CaseWriter {
 public:
  CaseWriter(std::string folder, FoamFormat const& format, FaceMesh const& mesh)
      : folder_(std::move(folder)),
        format_(format),
        mesh_(mesh),
        order_(mesh.faceNode.empty() ? 0 : mesh.owner.size()) {
    // OpenFOAM has the inner faces first, then those of each patch.
    std::iota(order_.begin(), order_.end(), 0);
    std::stable_sort(order_.begin(), order_.end(),
                     [&mesh](int a, int b) { return mesh.facePatch[a] < mesh.facePatch[b]; });
  }

  void Write() {
    fs::create_directories(folder_ + "/polyMesh");
    fs::create_directories(folder_ + "/0");
    WritePoints();
    WriteFaces();
    std::vector<int> owner, neighbour;
    for (int const f : order_) {
      owner.push_back(mesh_.owner[f]);
      if (mesh_.neighbour[f] >= 0) neighbour.push_back(mesh_.neighbour[f]);
    }
    Save("polyMesh/owner", Header("labelList") + Labels(owner));
    Save("polyMesh/neighbour", Header("labelList") + Labels(neighbour));
    WriteBoundary(static_cast<int>(neighbour.size()));
    meshBytes_ = bytes_;
    WriteField();
  }

  double MeshBytes() const { return meshBytes_; }
  double FieldBytes() const { return bytes_ - meshBytes_; }

 private:
  std::string Header(std::string const& className) const {
    return std::string("FoamFile\n{\n    version 2.0;\n    format ") +
           (format_.isBinary ? "binary" : "ascii") + ";\n    class " + className +
           ";\n    arch \"LSB;label=32;scalar=64\";\n}\n\n";
  }

  std::string Labels(std::vector<int> const& labels) const {
    std::string text = std::to_string(labels.size()) + "\n(";
    for (int const label : labels) {
      if (format_.isBinary) {
        AppendBytes(text, label);
      } else {
        text += '\n' + std::to_string(label);
      }
    }
    return text + ")\n";
  }

  void WritePoints() {
    std::string text = Header("vectorField") + std::to_string(mesh_.points.size()) + "\n(";
    for (Point const& p : mesh_.points) {
      if (format_.isBinary) {
        for (double const x : p) AppendBytes(text, x);
      } else {
        char line[100];
        std::snprintf(line, sizeof line, "\n(%.10g %.10g %.10g)", p[0], p[1], p[2]);
        text += line;
      }
    }
    Save("polyMesh/points", text + ")\n");
  }

  void WriteFaces() {
    std::vector<int> starts = {0}, nodes;
    std::string text = Header("faceList") + std::to_string(order_.size()) + "\n(";
    for (int const f : order_) {
      std::vector<int> const face(
          mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f]),
          mesh_.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh_.faceStart[f + 1]));
      if (format_.isBinary) {
        nodes.insert(nodes.end(), face.begin(), face.end());
        starts.push_back(static_cast<int>(nodes.size()));
        continue;
      }
      text += '\n' + std::to_string(face.size()) + '(';
      for (std::size_t n = 0; n < face.size(); ++n) text += (n > 0 ? " " : "") + std::to_string(face[n]);
      text += ')';
    }
    Save("polyMesh/faces",
         format_.isBinary ? Header("faceCompactList") + Labels(starts) + Labels(nodes) : text + ")\n");
  }

  void WriteBoundary(int first) {
    std::string text = Header("polyBoundaryMesh") + std::to_string(mesh_.patches.size()) + "\n(\n";
    for (std::size_t p = 0; p < mesh_.patches.size(); ++p) {
      auto const n = std::count(mesh_.facePatch.begin(), mesh_.facePatch.end(), static_cast<int>(p));
      text += mesh_.patches[p].name + " { type patch; nFaces " + std::to_string(n) + "; startFace " +
              std::to_string(first) + "; }\n";
      first += static_cast<int>(n);
    }
    Save("polyMesh/boundary", text + ")\n");
  }

  void WriteField() {
    reference_host::FoamOutput field;
    field.name = "U";
    field.location = "0";
    field.nComponents = 3;
    for (int c = 0; c < 3 * mesh_.nCells; ++c) field.cell.push_back(std::sin(1e-3 * c));
    for (auto const& patch : mesh_.patches)
      field.patches.push_back({patch.name, "zeroGradient", std::nullopt});
    Save("0/U", FoamFieldText(field, format_, ""));
  }

  void Save(std::string const& name, std::string const& text) {
    bytes_ += static_cast<double>(text.size());
    std::string const file = folder_ + "/" + name;
    if (!format_.isCompressed) {
      if (!(std::ofstream(file, std::ios::binary) << text).flush())
        throw std::runtime_error(file + ": cannot be written");
      return;
    }
    gzFile const packed = gzopen((file + ".gz").c_str(), "wb");
    bool const isWritten = packed != nullptr && gzfwrite(text.data(), 1, text.size(), packed) == text.size();
    if (packed == nullptr || gzclose(packed) != Z_OK || !isWritten)
      throw std::runtime_error(file + ": cannot be written");
  }

  std::string folder_;
  FoamFormat format_;
  FaceMesh const& mesh_;
  std::vector<int> order_;
  double bytes_ = 0;
  double meshBytes_ = 0;
};

void Time(std::string const& name, FoamFormat const& format, FaceMesh const& mesh, int nRounds,
          std::string const& folder) {
  CaseWriter writer(folder, format, mesh);
  writer.Write();
  double meshSeconds = 1e30, fieldSeconds = 1e30;
  for (int round = 0; round < nRounds; ++round) {
    FaceMesh read;
    meshSeconds =
        std::min(meshSeconds, Seconds([&] { read = reference_host::ReadPolyMesh(folder + "/polyMesh"); }));
    auto const boundary = BoundaryOf(read);
    fieldSeconds = std::min(fieldSeconds, Seconds([&] {
                              if (ReadFoamField(folder + "/0/U", read.nCells, boundary).cell.empty())
                                std::abort();
                            }));
  }
  std::string const table = "reading";
  Report(table, name, "mesh", writer.MeshBytes() / kMegabyte / meshSeconds, 0);
  Report(table, name, "field", writer.FieldBytes() / kMegabyte / fieldSeconds, 0);
  Report(table, name, "both",
         (writer.MeshBytes() + writer.FieldBytes()) / kMegabyte / (meshSeconds + fieldSeconds), 0);
}

FaceMesh MakeMesh(double nCells) {
  return reference_host::MakeBox(reference_host::ParseBoxSpec(benchmarks::BoxText(nCells, "hex")));
}

void MakeFolder(std::string const& folder) {
  if (!fs::create_directory(folder)) throw std::runtime_error(folder + ": is there already");
}

void WriteCase(double nCells, std::string const& folder) {
  MakeFolder(folder);
  FoamFormat format;
  format.isBinary = true;
  FaceMesh const mesh = MakeMesh(nCells);
  CaseWriter(folder, format, mesh).Write();
}

void Run(double nCells, int nRounds, std::string const& parent) {
  std::string const folder = parent + "/reading";
  MakeFolder(folder);
  FaceMesh const mesh = MakeMesh(nCells);
  struct Removal {
    std::string const& folder;
    ~Removal() {
      std::error_code ignored;
      fs::remove_all(folder, ignored);
    }
  } const removal{folder};
  FoamFormat format;
  for (bool const isBinary : {true, false}) {
    for (bool const isCompressed : {false, true}) {
      format.isBinary = isBinary;
      format.isCompressed = isCompressed;
      std::string const name = std::string(isBinary ? "binary" : "text") + (isCompressed ? ", .gz" : "");
      Time(name, format, mesh, nRounds,
           folder + "/" + std::to_string(isBinary) + std::to_string(isCompressed));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: reading_benchmark CELLS ROUNDS FOLDER, or write CELLS FOLDER\n");
    return 2;
  }
  try {
    if (std::string(argv[1]) == "write")
      WriteCase(std::atof(argv[2]), argv[3]);
    else
      Run(std::atof(argv[1]), std::atoi(argv[2]), argv[3]);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
