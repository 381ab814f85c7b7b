#pragma once

#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace reference_host {

inline Point AreaOf(FaceGroup const& faces, int f) { return {faces.sx[f], faces.sy[f], faces.sz[f]}; }
inline Point CentreOf(FaceGroup const& faces, int f) { return {faces.xc[f], faces.yc[f], faces.zc[f]}; }

/// All six groups of faces that a partition lends.
inline std::vector<FaceGroup> GroupsOf(HostPartition& partition) {
  std::vector<FaceGroup> groups;
  for (FaceGroupMembers const& members : face_groups::kTable) {
    groups.push_back(FacesOf(members.kind, *partition.mesh(), partition.partitionFaces()));
  }
  return groups;
}

}  // namespace reference_host
