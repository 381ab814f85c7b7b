#include "reference_host/cgns/CgnsField.h"

#include <cgnslib.h>

#include <array>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// An array of a solution.
struct Array {
  int solution = 0;
  std::string solutionName;
  std::string name;
  bool isAtCells = false;

  std::string FullName() const { return solutionName + "/" + name; }
};

std::vector<Array> ListArrays(CgnsFile const& file) {
  int nSolutions = 0;
  file.Check(cg_nsols(file.handle(), file.base(), CgnsFile::zone(), &nSolutions),
             "the solutions cannot be read");
  std::vector<Array> arrays;
  for (int s = 1; s <= nSolutions; ++s) {
    std::array<char, kCgnsNameSize> solution{}, name{};
    CGNS_ENUMT(GridLocation_t) location = CGNS_ENUMV(GridLocationNull);
    CGNS_ENUMT(DataType_t) type = CGNS_ENUMV(DataTypeNull);
    int nArrays = 0;
    file.Check(cg_sol_info(file.handle(), file.base(), CgnsFile::zone(), s, solution.data(), &location),
               "a solution cannot be read");
    file.Check(cg_nfields(file.handle(), file.base(), CgnsFile::zone(), s, &nArrays),
               "a solution cannot be read");
    for (int a = 1; a <= nArrays; ++a) {
      file.Check(cg_field_info(file.handle(), file.base(), CgnsFile::zone(), s, a, &type, name.data()),
                 "a solution cannot be read");
      arrays.push_back({s, solution.data(), name.data(), location == CGNS_ENUMV(CellCenter)});
    }
  }
  return arrays;
}

Array FindArray(CgnsFile const& file, std::string const& wanted) {
  NameList atCells, found;
  Array first;
  int nFound = 0;
  bool isElsewhere = false;
  for (Array const& array : ListArrays(file)) {
    bool const isWanted = array.name == wanted || array.FullName() == wanted;
    if (array.isAtCells) atCells.Add(Quoted(array.FullName()));
    if (isWanted && array.isAtCells) {
      if (nFound++ == 0) first = array;
      found.Add(Quoted(array.FullName()));
    }
    isElsewhere = isElsewhere || (isWanted && !array.isAtCells);
  }
  if (nFound > 1) {
    file.Fail("several solutions have " + Quoted(wanted) + " (" + found.Text() +
              "); name one as SOLUTION/ARRAY");
  }
  if (nFound == 0) {
    file.Fail((isElsewhere ? Quoted(wanted) + " is not at the cell centres" : "no array " + Quoted(wanted)) +
              "; arrays at cell centres: " + atCells.Text());
  }
  return first;
}

}  // namespace

std::vector<double> ReadCgnsField(std::string const& file, std::string const& field) {
  CgnsFile const cgns(file);
  Array const array = FindArray(cgns, field);
  int dimension = 0;
  std::array<cgsize_t, 3> size{};
  cgns.Check(
      cg_sol_size(cgns.handle(), cgns.base(), CgnsFile::zone(), array.solution, &dimension, size.data()),
      "the size of " + Quoted(array.FullName()) + " cannot be read");
  if (dimension != 1 || size[0] != cgns.nCells()) {
    cgns.Fail(Quoted(array.FullName()) + " has " + std::to_string(size[0]) + " values for " +
              std::to_string(cgns.nCells()) + " cells");
  }
  std::vector<double> values(static_cast<std::size_t>(size[0]));
  cgsize_t const first = 1;
  cgns.Check(cg_field_read(cgns.handle(), cgns.base(), CgnsFile::zone(), array.solution, array.name.c_str(),
                           CGNS_ENUMV(RealDouble), &first, size.data(), values.data()),
             Quoted(array.FullName()) + " cannot be read");
  return values;
}

}  // namespace reference_host
