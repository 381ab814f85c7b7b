#include "reference_host/cgns/CgnsField.h"

#include <cgnslib.h>

#include <array>
#include <map>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// An array of a solution and where it lies.
struct FlowArray {
  int solution = 0;
  std::string solutionName;
  std::string name;
  bool isAtCells = false;

  std::string FullName() const { return solutionName + "/" + name; }
};

std::vector<FlowArray> ListArrays(CgnsFile const& file) {
  int nSolutions = 0;
  file.Check(cg_nsols(file.handle(), file.base(), CgnsFile::zone(), &nSolutions),
             "the solutions cannot be read");
  std::vector<FlowArray> arrays;
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

bool Has(FlowArray const& array, std::string const& wanted) {
  return array.name == wanted || array.FullName() == wanted;
}

/// The arrays wantedX, wantedY, wantedZ of each solution that has all three at its cell centres.
std::vector<std::vector<FlowArray>> FindVectors(std::vector<FlowArray> const& arrays,
                                                std::string const& wanted) {
  std::map<int, std::vector<FlowArray>> ofSolution;
  for (char const* const component : {"X", "Y", "Z"}) {
    for (FlowArray const& array : arrays)
      if (array.isAtCells && Has(array, wanted + component)) ofSolution[array.solution].push_back(array);
  }
  std::vector<std::vector<FlowArray>> vectors;
  for (auto const& entry : ofSolution)
    if (entry.second.size() == 3) vectors.push_back(entry.second);
  return vectors;
}

/// The array of a scalar, or else the three arrays of a vector.
std::vector<FlowArray> FindArrays(CgnsFile const& file, std::string const& wanted) {
  std::vector<FlowArray> const arrays = ListArrays(file);
  std::vector<std::vector<FlowArray>> found;
  NameList atCells, names;
  bool isElsewhere = false;
  for (FlowArray const& array : arrays) {
    if (array.isAtCells) atCells.Add(Quoted(array.FullName()));
    if (Has(array, wanted) && array.isAtCells) found.push_back({array});
    isElsewhere = isElsewhere || (!array.isAtCells && (Has(array, wanted) || Has(array, wanted + 'X')));
  }
  if (found.empty()) found = FindVectors(arrays, wanted);
  for (std::vector<FlowArray> const& one : found)
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

void CheckSize(CgnsFile const& cgns, FlowArray const& array) {
  int dimension = 0;
  std::array<cgsize_t, 3> size{};
  cgns.Check(
      cg_sol_size(cgns.handle(), cgns.base(), CgnsFile::zone(), array.solution, &dimension, size.data()),
      "the size of " + Quoted(array.FullName()) + " cannot be read");
  if (dimension == 1 && size[0] == cgns.nCells()) return;
  cgns.Fail(Quoted(array.FullName()) + " has " + std::to_string(size[0]) + " values for " +
            std::to_string(cgns.nCells()) + " cells");
}

}  // namespace

CgnsFieldFile::CgnsFieldFile(std::string const& file, std::string const& field) : file_(file) {
  for (FlowArray const& array : FindArrays(file_, field)) {
    CheckSize(file_, array);
    arrays_.push_back({array.solution, array.name, array.FullName()});
  }
}

std::vector<double> CgnsFieldFile::Read(std::int64_t first, std::int64_t n) const {
  if (n == 0) return {};
  auto const begin = static_cast<cgsize_t>(first + 1), last = static_cast<cgsize_t>(first + n);
  std::vector<double> values(arrays_.size() * static_cast<std::size_t>(n)), component;
  for (std::size_t k = 0; k < arrays_.size(); ++k) {
    bool const isScalar = arrays_.size() == 1;
    if (!isScalar) component.resize(static_cast<std::size_t>(n));
    file_.Check(cg_field_read(file_.handle(), file_.base(), CgnsFile::zone(), arrays_[k].solution,
                              arrays_[k].name.c_str(), CGNS_ENUMV(RealDouble), &begin, &last,
                              isScalar ? values.data() : component.data()),
                Quoted(arrays_[k].fullName) + " cannot be read");
    for (std::size_t c = 0; c < component.size(); ++c) values[arrays_.size() * c + k] = component[c];
  }
  return values;
}

CgnsField ReadCgnsField(std::string const& file, std::string const& field) {
  CgnsFieldFile const cgns(file, field);
  return {cgns.nComponents(), cgns.Read(0, cgns.nCells())};
}

}  // namespace reference_host
