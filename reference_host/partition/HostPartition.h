#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// The cells exchanged between this partition and one neighbour, as 1-based cell numbers of this partition.
/// Where the mesh is periodic, the partition may be its own neighbour. One side sends in the order in which the other side receives.
struct ExchangeList {
  int part = 0;
  std::vector<int> send;     ///< interior cells
  std::vector<int> receive;  ///< halo cells
};

/// One partition in the form that the operators need. It owns every array that the lent records point to.
///
/// Cells are numbered as follows: interior cells in Cuthill-McKee order, then one ghost cell per boundary
/// face (inlet, outlet, symmetry, wall), then halo cells. Inner faces ascend by (ijCV, ij), where ijCV is the
/// lower number. A face at which the mesh is periodic is a partition face, whose halo cell stands one period
/// away from its owner, on any number of partitions. The centre of a ghost cell is the centre of its face, so a field there is the boundary
/// value.
class HostPartition {
 public:
  /// Builds geometry, numbering and tables of one partition, except the halo centres and the weights of the
  /// partition faces: for these, call CompleteHalo as soon as you have communication.
  explicit HostPartition(MeshPart const& part);
  ~HostPartition();
  HostPartition(HostPartition const&) = delete;
  HostPartition& operator=(HostPartition const&) = delete;

  /// Collective. Gets the centres of the halo cells from their owners, moved where the mesh is periodic, and computes the weights of the
  /// partition faces.
  void CompleteHalo(CCommunication& communication);

  CZYN3DFiniteVolumeMesh* mesh();
  CPartitionFace_DLL* partitionFaces();
  CZyn3dGV* globals();  ///< work arrays and reset blocks are allocated; BaseFileName is empty until set

  /// Sets BaseFileName of the globals; the text is copied.
  void SetBaseFileName(std::string const& name);

  int part() const;
  int nParts() const;
  int nHaloCells() const;
  /// The centre of cell c, 1..NCell, or for a cell beyond a period that of the cell whose values it has: where to
  /// evaluate a formula, to the same bits on every partition. @pre CompleteHalo
  Point OwnerCentre(int c) const;
  /// [halo cell - first halo cell] beyond which period it is (MeshPart::haloPeriod); 0: at its owner's place
  std::vector<int> const& haloPeriod() const;
  std::vector<ExchangeList> const& exchangeLists() const;  ///< ascending by neighbour part
  /// [1..NCell] 1-based number in the mesh file; 0: ghost
  std::vector<std::int64_t> const& globalCell() const;
  std::vector<std::int64_t> const& globalNode() const;  ///< [1..NNode] 1-based number in the mesh file
  std::vector<Patch> const& patches() const;
  /// [1..NCell] index into patches() for ghost cells, -1 elsewhere
  std::vector<int> const& patchOfGhost() const;

 private:
  struct Storage;
  std::unique_ptr<Storage> storage_;
};

}  // namespace reference_host
