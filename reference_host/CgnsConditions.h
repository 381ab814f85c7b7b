#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/CgnsFile.h"

namespace reference_host {

/// A boundary condition: which patch it stands for, and where it holds.
struct CgnsCondition {
  std::string name;                   ///< of the BC_t, for failures
  std::string patchName;              ///< the family's name if it has one, else its own
  std::string patchType;              ///< BCType_t, such as "BCWallViscous"
  bool byNodes = false;               ///< `members` are nodes, else surface elements
  std::vector<std::int64_t> members;  ///< numbers counted from 1
};

/// The boundary conditions of the zone, in the order of the file.
std::vector<CgnsCondition> ReadCgnsConditions(const CgnsFile& file);

}  // namespace reference_host
