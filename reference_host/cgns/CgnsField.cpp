#include "reference_host/cgns/CgnsField.h"

#include <cgnslib.h>

#include <array>
#include <map>

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

bool Has(Array const& array, std::string const& wanted) {
  return array.name == wanted || array.FullName() == wanted;
}

/// The arrays wantedX, wantedY, wantedZ of each solution that has all three at its cell centres.
std::vector<std::vector<Array>> FindVectors(std::vector<Array> const& arrays, std::string const& wanted) {
  std::map<int, std::vector<Array>> ofSolution;
  for (char const* const component : {"X", "Y", "Z"}) {
    for (Array const& array : arrays)
      if (array.isAtCells && Has(array, wanted + component)) ofSolution[array.solution].push_back(array);
  }
  std::vector<std::vector<Array>> vectors;
  for (auto const& entry : ofSolution)
    if (entry.second.size() == 3) vectors.push_back(entry.second);
  return vectors;
}

/// The array of a scalar, or else the three arrays of a vector.
std::vector<Array> FindArrays(CgnsFile const& file, std::string const& wanted) {
  std::vector<Array> const arrays = ListArrays(file);
  std::vector<std::vector<Array>> found;
  NameList atCells, names;
  bool isElsewhere = false;
  for (Array const& array : arrays) {
    if (array.isAtCells) atCells.Add(Quoted(array.FullName()));
    if (Has(array, wanted) && array.isAtCells) found.push_back({array});
    isElsewhere = isElsewhere || (!array.isAtCells && (Has(array, wanted) || Has(array, wanted + 'X')));
  }
  if (found.empty()) found = FindVectors(arrays, wanted);
  for (std::vector<Array> const& one : found)
    names.Add(Quoted(one.size() == 1 ? one.front().FullName() : one.front().solutionName + "/" + wanted));
  if (found.size() > 1) {
    file.Fail("several solutions have " + Quoted(wanted) + " (" + names.Text() +
              "); name one as SOLUTION/ARRAY");
  }
  if (found.empty()) {
    file.Fail((isElsewhere ? Quoted(wanted) + " is not at the cell centres" : "no array " + Quoted(wanted)) +
              "; arrays at cell centres: " + atCells.Text());
  }
  return found.front();
}

std::vector<double> ReadArray(CgnsFile const& cgns, Array const& array) {
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

}  // namespace

CgnsField ReadCgnsField(std::string const& file, std::string const& field) {
  CgnsFile const cgns(file);
  std::vector<Array> const arrays = FindArrays(cgns, field);
  if (arrays.size() == 1) return {1, ReadArray(cgns, arrays.front())};
  CgnsField vector = {3, {}};
  for (std::size_t k = 0; k < arrays.size(); ++k) {
    std::vector<double> const values = ReadArray(cgns, arrays[k]);
    vector.cell.resize(3 * values.size());
    for (std::size_t c = 0; c < values.size(); ++c) vector.cell[3 * c + k] = values[c];
  }
  return vector;
}

}  // namespace reference_host
