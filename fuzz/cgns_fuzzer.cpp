// CGNS files. The bytes do not stand for the file itself, where libcgns and HDF5 would meet them first, but for what a
// file says: a zone, its sections, polygons and polyhedra, boundary conditions, families and solutions, with numbers
// that may be wrong. libcgns writes that to a file, nodes of it are then overwritten with other numbers, and the reader
// gives a mesh that the check takes or refuses, or one line that says what is wrong.

#include <cgns_io.h>
#include <cgnslib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "fuzz/FuzzFolder.h"
#include "reference_host/cgns/CgnsField.h"
#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/cgns/CgnsReader.h"
#include "reference_host/cgns/CgnsSectionReader.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"

namespace {

/// Takes numbers from the bytes; zeros when they are used up.
class Bytes {
 public:
  Bytes(std::uint8_t const* data, std::size_t size) : at_(data), end_(data + size) {}
  bool AtEnd() const { return at_ == end_; }
  int Byte() { return at_ == end_ ? 0 : *at_++; }

  /// Mostly small; 0xF8 and above stand for numbers that no small file can mean.
  cgsize_t Number() {
    // The library counts in 4 or 8 bytes, as it was built.
    using Limits = std::numeric_limits<cgsize_t>;
    static std::array<cgsize_t, 8> const extremes = {
        -1, INT32_MAX, INT32_MAX - 1, INT32_MIN, Limits::max(), Limits::min(), Limits::max() / 8, 1000000};
    int const byte = Byte();
    return byte >= 0xF8 ? extremes[static_cast<std::size_t>(byte - 0xF8)] : byte < 0xC0 ? byte : 0xBF - byte;
  }

  std::vector<cgsize_t> Numbers(int n) {
    std::vector<cgsize_t> numbers;
    for (int i = 0; i < n; ++i) numbers.push_back(Number());
    return numbers;
  }

 private:
  std::uint8_t const* at_;
  std::uint8_t const* end_;
};

/// What the writing calls say about nonsense does not matter: the file then lacks it.
class Writer {
 public:
  Writer(std::string const& name, Bytes& bytes) : bytes_(bytes) {
    cg_set_file_type(CG_FILE_ADF);  // a tenth of the time of HDF5
    if (cg_open(name.c_str(), CG_MODE_WRITE, &file_) != CG_OK) std::abort();
    cg_base_write(file_, "Base", 3, 3, &base_);
    WriteZone();
  }
  ~Writer() { cg_close(file_); }
  Writer(Writer const&) = delete;
  Writer& operator=(Writer const&) = delete;

  void WriteNext() {
    switch (bytes_.Byte() % 8) {
      case 0:
        return WriteSection();
      case 1:
        return WritePolygons(CGNS_ENUMV(NGON_n));
      case 2:
        return WritePolygons(CGNS_ENUMV(NFACE_n));
      case 3:
        return WritePolygons(CGNS_ENUMV(MIXED));
      case 4:
        return WriteCondition();
      case 5:
        return WriteSolution();
      case 6:
        return WriteFamily();
      default:
        return WriteCube();
    }
  }

 private:
  void WriteZone() {
    int const nNodes = bytes_.Byte() % 64;
    std::array<cgsize_t, 3> const sizes = {nNodes, std::max<cgsize_t>(0, bytes_.Number()), 0};
    cg_zone_write(file_, base_, "Zone", sizes.data(), CGNS_ENUMV(Unstructured), &zone_);
    for (char const* const name : {"CoordinateX", "CoordinateY", "CoordinateZ"}) {
      std::vector<double> values;
      for (int n = 0; n < nNodes; ++n) values.push_back(bytes_.Byte() / 16);
      int index = 0;
      if (nNodes > 0)
        cg_coord_write(file_, base_, zone_, CGNS_ENUMV(RealDouble), name, values.data(), &index);
    }
  }

  std::string Name(char const* word) { return word + std::to_string(nNames_++); }

  cgsize_t First() {
    cgsize_t const given = bytes_.Number();
    return std::min<cgsize_t>(given == 0 ? next_ : given, INT32_MAX - 8);
  }

  void WriteSection() {
    static std::array<CGNS_ENUMT(ElementType_t), 10> const types = {
        CGNS_ENUMV(TETRA_4), CGNS_ENUMV(PYRA_5),  CGNS_ENUMV(PENTA_6), CGNS_ENUMV(HEXA_8),
        CGNS_ENUMV(TRI_3),   CGNS_ENUMV(QUAD_4),  CGNS_ENUMV(BAR_2),   CGNS_ENUMV(NODE),
        CGNS_ENUMV(BAR_3),   CGNS_ENUMV(TETRA_10)};
    auto const type = types[static_cast<std::size_t>(bytes_.Byte()) % types.size()];
    int nNodes = 0, index = 0;
    cg_npe(type, &nNodes);
    int const n = 1 + bytes_.Byte() % 8;
    std::vector<cgsize_t> const nodes = bytes_.Numbers(n * nNodes);
    cgsize_t const first = First();
    cg_section_write(file_, base_, zone_, Name("S").c_str(), type, first, first + n - 1, 0, nodes.data(),
                     &index);
    next_ = std::max(next_, first + n);
  }

  void WritePolygons(CGNS_ENUMT(ElementType_t) type) {
    int const n = 1 + bytes_.Byte() % 8;
    std::vector<cgsize_t> offsets = {0};
    for (int i = 0; i < n; ++i) offsets.push_back(offsets.back() + bytes_.Byte() % 10);
    std::vector<cgsize_t> entries = bytes_.Numbers(static_cast<int>(offsets.back()));
    // The library finds the lengths for itself, from types and offsets, and does not stop at the end of nonsense.
    entries.resize(4096, 0);
    offsets.resize(4096, offsets.back());
    cgsize_t const first = First();
    int index = 0;
    cg_poly_section_write(file_, base_, zone_, Name("S").c_str(), type, first, first + n - 1, 0,
                          entries.data(), offsets.data(), &index);
    next_ = std::max(next_, first + n);
    if (index == 0 || bytes_.Byte() % 2 == 0) return;
    std::vector<cgsize_t> parents = bytes_.Numbers(4 * n);
    parents.resize(4096, 0);
    cg_parent_data_write(file_, base_, zone_, index, parents.data());
  }

  /// A cube of polygons that closes, so that less depends on luck.
  void WriteCube() {
    std::vector<cgsize_t> const nodes = {1, 4, 3, 2, 5, 6, 7, 8, 1, 2, 6, 5,
                                         2, 3, 7, 6, 3, 4, 8, 7, 4, 1, 5, 8};
    std::vector<cgsize_t> const offsets = {0, 4, 8, 12, 16, 20, 24}, faces = {1, 2, 3, 4, 5, 6},
                                ofCell = {0, 6};
    int index = 0;
    cg_poly_section_write(file_, base_, zone_, Name("S").c_str(), CGNS_ENUMV(NGON_n), 1, 6, 0, nodes.data(),
                          offsets.data(), &index);
    cg_poly_section_write(file_, base_, zone_, Name("S").c_str(), CGNS_ENUMV(NFACE_n), 7, 7, 0, faces.data(),
                          ofCell.data(), &index);
    next_ = 8;
  }

  void WriteCondition() {
    static std::array<CGNS_ENUMT(PointSetType_t), 5> const sets = {
        CGNS_ENUMV(PointList), CGNS_ENUMV(PointRange), CGNS_ENUMV(ElementList), CGNS_ENUMV(ElementRange),
        CGNS_ENUMV(PointListDonor)};
    static std::array<CGNS_ENUMT(GridLocation_t), 4> const locations = {
        CGNS_ENUMV(Vertex), CGNS_ENUMV(FaceCenter), CGNS_ENUMV(CellCenter), CGNS_ENUMV(EdgeCenter)};
    auto const set = sets[static_cast<std::size_t>(bytes_.Byte()) % sets.size()];
    auto const type = static_cast<CGNS_ENUMT(BCType_t)>(bytes_.Byte() % NofValidBCTypes);
    int const n =
        set == CGNS_ENUMV(PointRange) || set == CGNS_ENUMV(ElementRange) ? 2 : 1 + bytes_.Byte() % 8;
    std::vector<cgsize_t> const members = bytes_.Numbers(n);
    int index = 0;
    if (cg_boco_write(file_, base_, zone_, Name("C").c_str(), type, set, n, members.data(), &index) != CG_OK)
      return;
    cg_boco_gridlocation_write(file_, base_, zone_, index,
                               locations[static_cast<std::size_t>(bytes_.Byte()) % locations.size()]);
    if (bytes_.Byte() % 2 == 0) return;
    if (cg_goto(file_, base_, "Zone_t", zone_, "ZoneBC_t", 1, "BC_t", index, "end") == CG_OK)
      cg_famname_write(("F" + std::to_string(bytes_.Byte() % 3)).c_str());
  }

  void WriteSolution() {
    int solution = 0, index = 0;
    auto const location = bytes_.Byte() % 2 == 0 ? CGNS_ENUMV(CellCenter) : CGNS_ENUMV(Vertex);
    if (cg_sol_write(file_, base_, zone_, Name("Sol").c_str(), location, &solution) != CG_OK) return;
    std::vector<double> const values(256, 1.0);
    cgsize_t nCells = 0;
    int dimension = 0;
    if (cg_sol_size(file_, base_, zone_, solution, &dimension, &nCells) == CG_OK && nCells <= 256)
      cg_field_write(file_, base_, zone_, solution, CGNS_ENUMV(RealDouble), "p", values.data(), &index);
  }

  void WriteFamily() {
    int family = 0, condition = 0;
    if (cg_family_write(file_, base_, ("F" + std::to_string(bytes_.Byte() % 3)).c_str(), &family) == CG_OK)
      cg_fambc_write(file_, base_, family, "FamBC",
                     static_cast<CGNS_ENUMT(BCType_t)>(bytes_.Byte() % NofValidBCTypes), &condition);
  }

  Bytes& bytes_;
  int file_ = 0, base_ = 0, zone_ = 0;
  int nNames_ = 0;
  cgsize_t next_ = 1;
};

/// Overwrites numbers in nodes that the writing calls keep right.
void Falsify(std::string const& name, Bytes& bytes) {
  static std::array<std::string, 6> const paths = {
      "", "/ElementRange", "/ElementStartOffset", "/ElementConnectivity", "/ParentElements", "/PointList"};
  int file = 0;
  double root = 0.0, node = 0.0;
  if (cgio_open_file(name.c_str(), CGIO_MODE_MODIFY, CGIO_FILE_ADF, &file) != CGIO_ERR_NONE) return;
  cgio_get_root_id(file, &root);
  while (!bytes.AtEnd()) {
    std::string const& path = paths[static_cast<std::size_t>(bytes.Byte()) % paths.size()];
    std::string const number = std::to_string(bytes.Byte() % 4);
    std::string full = "/Base/Zone" + (path.empty() ? path : "/S" + number + path);
    if (path == "/PointList") full = "/Base/Zone/ZoneBC/C" + number + path;
    cgsize_t nValues = 0;
    if (cgio_get_node_id(file, root, full.c_str(), &node) != CGIO_ERR_NONE) continue;
    int nDimensions = 0;
    std::array<cgsize_t, CGIO_MAX_DIMENSIONS> sizes{};
    std::array<char, CGIO_MAX_DATATYPE_LENGTH + 1> type{};
    cgio_get_dimensions(file, node, &nDimensions, sizes.data());
    cgio_get_data_type(file, node, type.data());
    nValues = nDimensions > 0 ? 1 : 0;
    for (int d = 0; d < nDimensions; ++d) nValues *= sizes[static_cast<std::size_t>(d)];
    bool const isLong = std::strcmp(type.data(), "I8") == 0;
    if (nValues < 1 || nValues > 1000 || (!isLong && std::strcmp(type.data(), "I4") != 0)) continue;
    std::vector<std::int64_t> values(static_cast<std::size_t>(nValues));
    std::vector<std::int32_t> shorter(values.size());
    void* const data = isLong ? static_cast<void*>(values.data()) : static_cast<void*>(shorter.data());
    if (cgio_read_all_data_type(file, node, type.data(), data) != CGIO_ERR_NONE) continue;
    std::size_t const at = static_cast<std::size_t>(bytes.Byte()) % values.size();
    values[at] = bytes.Number();
    shorter[at] = static_cast<std::int32_t>(values[at]);
    cgio_write_all_data(file, node, data);
  }
  cgio_close_file(file);
}

template <class Work>
void TakeOrRefuse(Work const& work) {
  try {
    work();
  } catch (reference_host::MeshError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr || std::strlen(error.what()) > 1000) std::abort();
  }
}

/// Reads the file as ranks that share it do, in three ranges of everything.
void ReadInRanges(std::string const& name) {
  using namespace reference_host;
  CgnsFile const file(name);
  auto const inThree = [](std::int64_t n, auto const& read) {
    for (std::int64_t part = 0; part < 3; ++part) read(part * n / 3, (part + 1) * n / 3 - part * n / 3);
  };
  inThree(file.nNodes(), [&](std::int64_t first, std::int64_t n) {
    if (n > 0) file.Points(first, n);
  });
  for (CgnsSection const& section : file.Sections()) {
    CgnsSectionReader const reader(file, section);
    inThree(section.size(), [&](std::int64_t first, std::int64_t n) {
      CgnsElements const elements = reader.Read(first, n);
      if (elements.start.size() != static_cast<std::size_t>(n) + 1) std::abort();
      if (elements.start.back() != elements.entry.size()) std::abort();
      if (!section.hasParents) return;
      if (reader.ReadParents(first, n).size() != 2 * static_cast<std::size_t>(n)) std::abort();
    });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  static std::string const file = folder.Path("mesh.cgns");
  Bytes bytes(data, size);
  {
    Writer writer(file, bytes);
    for (int n = bytes.Byte() % 16; n > 0 && !bytes.AtEnd(); --n) writer.WriteNext();
  }
  Falsify(file, bytes);
  TakeOrRefuse([] { reference_host::CheckMesh(reference_host::ReadCgns(file)); });
  TakeOrRefuse([] { reference_host::ReadCgnsField(file, "p"); });
  TakeOrRefuse([] { ReadInRanges(file); });
  return 0;
}
