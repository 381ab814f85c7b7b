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
/// One side sends in the order in which the other side receives.
struct ExchangeList {
  int part = 0;
  std::vector<int> send;     ///< interior cells
  std::vector<int> receive;  ///< halo cells
};

/// One partition in the form that the operators need. It owns every array that the lent records point to.
///
/// Cells are numbered as follows: interior cells in Cuthill-McKee order, then one ghost cell per boundary
/// face (inlet, outlet, symmetry, wall), then halo cells. Inner faces ascend by (ijCV, ij), where ijCV is the
/// lower number. The centre of a ghost cell is the centre of its face, so a field there is the boundary
/// value.
class HostPartition {
 public:
  /// Builds geometry, numbering and tables of one partition, except the halo centres and the weights of the
  /// partition faces: for these, call CompleteHalo as soon as you have communication.
  explicit HostPartition(MeshPart const& part);
  ~HostPartition();
  HostPartition(HostPartition const&) = delete;
  HostPartition& operator=(HostPartition const&) = delete;

  /// Collective. Gets the centres of the halo cells from their owners and computes the weights of the
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
