#pragma once

#include <cgnslib.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

/// Writes a CGNS file call by call; failures of the library fail the test. Numbers are counted from 1.
class CgnsTestFile {
 public:
  explicit CgnsTestFile(std::string const& name) { Done(cg_open(name.c_str(), CG_MODE_WRITE, &file_)); }
  ~CgnsTestFile() { Done(cg_close(file_)); }
  CgnsTestFile(CgnsTestFile const&) = delete;
  CgnsTestFile& operator=(CgnsTestFile const&) = delete;

  void Base(std::string const& name = "Base", int cellDimension = 3) {
    Done(cg_base_write(file_, name.c_str(), cellDimension, 3, &base_));
  }

  void Zone(std::vector<reference_host::Point> const& points, int nCells, std::string const& name = "Zone") {
    std::array<cgsize_t, 3> const sizes = {static_cast<cgsize_t>(points.size()), nCells, 0};
    Done(cg_zone_write(file_, base_, name.c_str(), sizes.data(), CGNS_ENUMV(Unstructured), &zone_));
    std::array<char const*, 3> const coordinates = {"CoordinateX", "CoordinateY", "CoordinateZ"};
    for (std::size_t d = 0; d < 3; ++d) {
      std::vector<double> values;
      for (reference_host::Point const& point : points) values.push_back(point[d]);
      int index = 0;
      Done(
          cg_coord_write(file_, base_, zone_, CGNS_ENUMV(RealDouble), coordinates[d], values.data(), &index));
    }
  }

  /// Elements of one type with a fixed number of nodes.
  void Section(std::string const& name, CGNS_ENUMT(ElementType_t) type, int first, int last,
               std::vector<cgsize_t> const& nodes) {
    int index = 0;
    Done(cg_section_write(file_, base_, zone_, name.c_str(), type, first, last, 0, nodes.data(), &index));
  }

  /// MIXED, NGON_n or NFACE_n.
  /// @param[in] parents  [0..2n-1] of NGON_n, or empty
  void Section(std::string const& name, CGNS_ENUMT(ElementType_t) type, int first, int last,
               std::vector<cgsize_t> const& entries, std::vector<cgsize_t> const& offsets,
               std::vector<cgsize_t> parents = {}) {
    int index = 0;
    Done(cg_poly_section_write(file_, base_, zone_, name.c_str(), type, first, last, 0, entries.data(),
                               offsets.data(), &index));
    if (parents.empty()) return;
    parents.resize(2 * parents.size(), 0);  // the faces' positions in their cells, of no interest
    Done(cg_parent_data_write(file_, base_, zone_, index, parents.data()));
  }

  void Condition(std::string const& name, CGNS_ENUMT(BCType_t) type, CGNS_ENUMT(PointSetType_t) set,
                 std::vector<cgsize_t> const& members,
                 CGNS_ENUMT(GridLocation_t) location = CGNS_ENUMV(FaceCenter),
                 std::string const& family = "") {
    int index = 0;
    Done(cg_boco_write(file_, base_, zone_, name.c_str(), type, set, static_cast<cgsize_t>(members.size()),
                       members.data(), &index));
    if (location != CGNS_ENUMV(Vertex)) {
      Done(cg_boco_gridlocation_write(file_, base_, zone_, index, location));
    }
    if (family.empty()) return;
    Done(cg_goto(file_, base_, "Zone_t", zone_, "ZoneBC_t", 1, "BC_t", index, "end"));
    Done(cg_famname_write(family.c_str()));
  }

  void Family(std::string const& name, CGNS_ENUMT(BCType_t) type) {
    int family = 0, condition = 0;
    Done(cg_family_write(file_, base_, name.c_str(), &family));
    Done(cg_fambc_write(file_, base_, family, "FamBC", type, &condition));
  }

  void Solution(std::string const& name, CGNS_ENUMT(GridLocation_t) location) {
    Done(cg_sol_write(file_, base_, zone_, name.c_str(), location, &solution_));
  }

  void Array(std::string const& name, std::vector<double> const& values) {
    int index = 0;
    Done(cg_field_write(file_, base_, zone_, solution_, CGNS_ENUMV(RealDouble), name.c_str(), values.data(),
                        &index));
  }

  int file() const { return file_; }
  int base() const { return base_; }

 private:
  static void Done(int status) { EXPECT_EQ(status, CG_OK) << cg_get_error(); }

  int file_ = 0, base_ = 0, zone_ = 0, solution_ = 0;
};
