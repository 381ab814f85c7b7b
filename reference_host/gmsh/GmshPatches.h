#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Physical surfaces as patches, by ascending tag; surfaces of one name are one patch.
class GmshPatches {
 public:
  /// @param[in] surfaceName  GmshContent::surfaceName
  /// @param[in] physicals    the physical tags of surface elements; 0: none
  GmshPatches(std::map<std::int64_t, std::string> const& surfaceName,
              std::set<std::int64_t> const& physicals);

  std::vector<Patch> const& Patches() const { return patches_; }

  /// The patch of a physical surface, which the constructor has been given.
  int Find(std::int64_t tag) const { return patchOfTag_.at(tag); }

 private:
  std::vector<Patch> patches_;
  std::map<std::int64_t, int> patchOfTag_;
};

}  // namespace reference_host
