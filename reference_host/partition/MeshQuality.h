#pragma once

#include <cstdint>

#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// Two measures of the faces between two cells, as sums that can be added up over partitions.
///
/// With d the vector between the two cell centres, S the area vector and x_f the centre of a face:
/// - non-orthogonality: the angle between d and S in degrees, 0 on a mesh of boxes;
/// - skewness: |x_f - x_i| / |d|, where x_i = x_CV + Lamda d is the point on the line of centres at which
///   linear interpolation gives its value; 0 if that point is the face centre.
struct QualitySums {
  double sumNonOrthogonality = 0.0;  ///< degrees
  double maxNonOrthogonality = 0.0;  ///< degrees
  double sumSkewness = 0.0;
  double maxSkewness = 0.0;
  std::int64_t nFaces = 0;  ///< the averages are sum / nFaces
};

/// The sums over the inner faces of a partition and its partition faces to higher parts, so that all
/// partitions together count every face once. Not collective.
/// @pre HostPartition::CompleteHalo has been called
QualitySums MeasureQuality(HostPartition& partition);

/// The sums over the inner faces and all partition faces of any host's partition. Not collective.
/// @pre the halo cells have their centres
QualitySums MeasureQuality(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partitionFaces);

/// Adds the faces of `more` to `sums`.
void AddQuality(QualitySums& sums, QualitySums const& more);

}  // namespace reference_host
