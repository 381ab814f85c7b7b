#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"

namespace reference_host {

/// A boundary condition: its patch, and the faces where it holds.
struct CgnsCondition {
  std::string name;                  ///< of the BC_t, for messages
  std::string patchName;             ///< the family's name if it has one, else its own
  std::string patchType;             ///< BCType_t, such as "BCWallViscous"
  bool byNodes = false;              ///< the members are nodes, else surface elements
  bool isRange = false;              ///< the members are first .. last, else ReadCgnsMembers has them
  std::int64_t first = 0, last = 0;  ///< counted from 1, both included; valid numbers of nodes or elements

  int index = 0;                    ///< its number in the library
  std::int64_t listSize = 0;        ///< 0 for a range
  std::int64_t normalListSize = 0;  ///< numbers in the file beside the members
};

/// The boundary conditions of the zone, in the order of the file.
/// @param[in] lastElement  of the zone
std::vector<CgnsCondition> ReadCgnsConditions(CgnsFile const& file, std::int64_t lastElement);

/// The members of a condition that is not a range, counted from 1 and not checked.
std::vector<std::int64_t> ReadCgnsMembers(CgnsFile const& file, CgnsCondition const& condition);

}  // namespace reference_host
