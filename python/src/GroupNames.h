#pragma once

#include <pybind11/pybind11.h>

#include <map>
#include <optional>
#include <string>

#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MeshError.h"

namespace zyn_python {

/// Boundary groups by patch name.
using GroupsByUser = std::map<std::string, reference_host::BoundaryGroup>;

/// The same as Python passes them; nothing for None.
using GroupNames = std::optional<std::map<std::string, std::string>>;

inline reference_host::BoundaryGroup GroupNamed(std::string const& name, std::string const& patch) {
  auto const group = reference_host::GroupFromWord(name);
  if (!group)
    throw pybind11::value_error("the group of the patch '" + patch +
                                "' must be 'inlet', 'outlet', 'symmetry' or 'wall', not '" + name + "'");
  return *group;
}

inline GroupsByUser GroupsOf(GroupNames const& names) {
  GroupsByUser groups;
  if (names) {
    for (auto const& [patch, group] : *names) groups[patch] = GroupNamed(group, patch);
  }
  return groups;
}

/// In the module that calls it, errors of the readers are ValueErrors.
inline void TranslateMeshErrors() {
  pybind11::register_local_exception_translator(
      [](std::exception_ptr
             error) {  // NOLINT(performance-unnecessary-value-param): the type that pybind11 takes
        try {
          if (error) std::rethrow_exception(error);
        } catch (reference_host::MeshError const& e) {
          PyErr_SetString(PyExc_ValueError, e.what());
        }
      });
}

}  // namespace zyn_python
