#include "reference_host/cgns/CgnsConditions.h"

#include <cgnslib.h>

#include <array>
#include <map>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

constexpr std::size_t kPathLength = CG_MAX_GOTO_DEPTH * 33 + 1;  // a family of another base has its path

/// By family: the type for those conditions that leave it to their family.
std::map<std::string, std::string> ReadFamilyTypes(CgnsFile const& file) {
  int nFamilies = 0;
  file.Check(cg_nfamilies(file.handle(), file.base(), &nFamilies), "the families cannot be read");
  std::map<std::string, std::string> types;
  for (int f = 1; f <= nFamilies; ++f) {
    std::array<char, kCgnsNameSize> family{}, condition{};
    int nConditions = 0, nGeometries = 0;
    file.Check(cg_family_read(file.handle(), file.base(), f, family.data(), &nConditions, &nGeometries),
               "a family cannot be read");
    if (nConditions < 1) continue;
    CGNS_ENUMT(BCType_t) type = CGNS_ENUMV(BCTypeNull);
    file.Check(cg_fambc_read(file.handle(), file.base(), f, 1, condition.data(), &type),
               "the condition of family " + Quoted(family.data()) + " cannot be read");
    types[family.data()] = cg_BCTypeName(type);
  }
  return types;
}

/// Empty if the condition has no family. The last part of a path ("/Base/Family") counts.
std::string FamilyOf(CgnsFile const& file, int condition) {
  file.Check(cg_goto(file.handle(), file.base(), "Zone_t", CgnsFile::zone(), "ZoneBC_t", 1, "BC_t", condition,
                     "end"),
             "a boundary condition cannot be read");
  std::array<char, kPathLength> path{};
  int const status = cg_famname_read(path.data());
  if (status == CG_NODE_NOT_FOUND) return {};
  file.Check(status, "the family of a boundary condition cannot be read");
  std::string const family = path.data();
  return family.substr(family.find_last_of('/') + 1);
}

/// Whether the members of a condition are nodes (else surface elements).
bool IsByNodes(CgnsFile const& file, int index, CGNS_ENUMT(PointSetType_t) set, std::string const& name) {
  if (set == CGNS_ENUMV(ElementRange) || set == CGNS_ENUMV(ElementList)) return false;
  if (set != CGNS_ENUMV(PointRange) && set != CGNS_ENUMV(PointList)) {
    file.Fail("boundary condition " + Quoted(name) + " is given by " + cg_PointSetTypeName(set) +
              "; PointRange, PointList, ElementRange and ElementList can be read");
  }
  CGNS_ENUMT(GridLocation_t) location = CGNS_ENUMV(Vertex);
  file.Check(cg_boco_gridlocation_read(file.handle(), file.base(), CgnsFile::zone(), index, &location),
             "the location of boundary condition " + Quoted(name) + " cannot be read");
  if (location != CGNS_ENUMV(Vertex) && location != CGNS_ENUMV(FaceCenter)) {
    file.Fail("boundary condition " + Quoted(name) + " is given at " + cg_GridLocationName(location) +
              "; only Vertex and FaceCenter can be read");
  }
  return location == CGNS_ENUMV(Vertex);
}

/// @param[in] nNumbers  size of the list, or 2 for a range
std::vector<std::int64_t> ReadNumbers(CgnsFile const& file, int index, std::string const& name,
                                      std::int64_t nNumbers, std::int64_t normalListSize) {
  std::vector<cgsize_t> given(static_cast<std::size_t>(nNumbers));
  // The library wants room for the normals, too, which are not used.
  std::vector<double> normals(static_cast<std::size_t>(normalListSize));
  file.Check(cg_boco_read(file.handle(), file.base(), CgnsFile::zone(), index, given.data(),
                          normals.empty() ? nullptr : normals.data()),
             "boundary condition " + Quoted(name) + " cannot be read");
  return std::vector<std::int64_t>(given.begin(), given.end());
}

void ReadRange(CgnsFile const& file, std::int64_t nGiven, std::int64_t lastElement,
               CgnsCondition& condition) {
  std::vector<std::int64_t> const given =
      ReadNumbers(file, condition.index, condition.name, nGiven, condition.normalListSize);
  std::int64_t const most = condition.byNodes ? file.nNodes() : lastElement;
  if (given.size() != 2 || given[0] < 1 || given[1] < given[0] || given[1] > most) {
    file.Fail("boundary condition " + Quoted(condition.name) +
              " has a range that does not ascend within the mesh");
  }
  condition.isRange = true;
  condition.first = given[0];
  condition.last = given[1];
}

CgnsCondition ReadCondition(CgnsFile const& file, int index,
                            std::map<std::string, std::string> const& typeOfFamily,
                            std::int64_t lastElement) {
  std::array<char, kCgnsNameSize> name{};
  CGNS_ENUMT(BCType_t) type = CGNS_ENUMV(BCTypeNull);
  CGNS_ENUMT(PointSetType_t) set = CGNS_ENUMV(PointSetTypeNull);
  CGNS_ENUMT(DataType_t) normalType = CGNS_ENUMV(DataTypeNull);
  cgsize_t nGiven = 0, normalListSize = 0;
  std::array<int, 3> normalIndex{};
  int nDataSets = 0;
  file.Check(cg_boco_info(file.handle(), file.base(), CgnsFile::zone(), index, name.data(), &type, &set,
                          &nGiven, normalIndex.data(), &normalListSize, &normalType, &nDataSets),
             "a boundary condition cannot be read");

  CgnsCondition condition;
  condition.name = condition.patchName = name.data();
  condition.patchType = cg_BCTypeName(type);
  std::string const family = FamilyOf(file, index);
  if (!family.empty()) condition.patchName = family;
  if (type == CGNS_ENUMV(FamilySpecified)) {
    auto const found = typeOfFamily.find(family);
    if (found != typeOfFamily.end()) condition.patchType = found->second;
  }
  condition.index = index;
  condition.byNodes = IsByNodes(file, index, set, condition.name);
  file.CheckRoom(nGiven, "members of boundary condition " + Quoted(condition.name));
  file.CheckRoom(normalListSize, "normals of boundary condition " + Quoted(condition.name));
  condition.normalListSize = normalListSize;
  if (set == CGNS_ENUMV(PointList) || set == CGNS_ENUMV(ElementList)) {
    condition.listSize = nGiven;
  } else {
    ReadRange(file, nGiven, lastElement, condition);
  }
  return condition;
}

}  // namespace

std::vector<CgnsCondition> ReadCgnsConditions(CgnsFile const& file, std::int64_t lastElement) {
  int nConditions = 0;
  file.Check(cg_nbocos(file.handle(), file.base(), CgnsFile::zone(), &nConditions),
             "the boundary conditions cannot be read");
  std::map<std::string, std::string> const typeOfFamily = ReadFamilyTypes(file);
  std::vector<CgnsCondition> conditions;
  for (int index = 1; index <= nConditions; ++index) {
    conditions.push_back(ReadCondition(file, index, typeOfFamily, lastElement));
  }
  return conditions;
}

std::vector<std::int64_t> ReadCgnsMembers(CgnsFile const& file, CgnsCondition const& condition) {
  return ReadNumbers(file, condition.index, condition.name, condition.listSize, condition.normalListSize);
}

}  // namespace reference_host
