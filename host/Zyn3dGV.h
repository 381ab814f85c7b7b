#pragma once

/// @file
/// The records that a solver fills and lends to the operators: mesh, partition faces and global variables.
///
/// Conventions for every array of these records:
/// - `[1..n]` is a 1-based array of n+1 elements; element 0 exists and is never read.
/// - `int` is 32 bits signed. Counts are `int`. L is the mesh's unit of length, U the unit of a field.
/// - A ragged table is an array of pointers to rows. `row[0]` is the number of entries, which are
///   `row[1..row[0]]`. `CellLnods` and `CellFaceType` are the two exceptions; see there.
/// - Cells 1..`NInnerCells` are the interior cells, which this partition owns. The others up to `NCell` are
///   ghost cells (one beyond each boundary face) and halo cells (copies of cells that neighbour partitions
///   own), in any order: the operators find them through the face tables alone.
/// - An area vector has the face's area as its length and points out of the `CV` cell.
///
/// The solver owns all of it, and keeps it alive and unchanged for as long as an operator that received it
/// lives: the stencils and moments made at set-up refer to its numbering. The operators copy nothing and
/// check no index.

/// One partition of the finite-volume mesh. A plain record: the solver fills it, the operators read it.
/// A group whose count is 0 may leave its arrays null.
class CZYN3DFiniteVolumeMesh {
 public:
  double *xn = nullptr, *yn = nullptr, *zn = nullptr;  ///< [1..NNode] node coordinates, L

  /// [1..NCell] cell centres, L, of ghost and halo cells too, since those are the positions of neighbours.
  /// The centre of a ghost cell is the point where the boundary value holds: position and value belong
  /// together.
  double *xc = nullptr, *yc = nullptr, *zc = nullptr;

  /// [1..NInnerFaces] weight of the `ij` side: the linear face value is Lamda*phi[ij] + (1-Lamda)*phi[ijCV].
  double* Lamda = nullptr;
  double* Volume = nullptr;  ///< [1..NInnerCells] cell volume, L^3

  /// [1..count of the group] the ghost cell beyond each boundary face.
  int *ijInlet = nullptr, *ijOutlet = nullptr, *ijWall = nullptr, *ijSymmetry = nullptr;
  /// [1..count of the group] the interior cell at each boundary face.
  int *ijInletCV = nullptr, *ijOutletCV = nullptr, *ijWallCV = nullptr, *ijSymmetryCV = nullptr;
  int NInlet = 0, NOutlet = 0, NWall = 0, NSymmetry = 0;  ///< faces of each boundary group; any may be 0

  double *ijWallSx = nullptr, *ijWallSy = nullptr, *ijWallSz = nullptr;     ///< [1..NWall] area vector, L^2
  double *ijInletSx = nullptr, *ijInletSy = nullptr, *ijInletSz = nullptr;  ///< [1..NInlet] area vector
  double *ijOutletSx = nullptr, *ijOutletSy = nullptr, *ijOutletSz = nullptr;  ///< [1..NOutlet] area vector
  /// [1..NSymmetry] area vector
  double *ijSymmetrySx = nullptr, *ijSymmetrySy = nullptr, *ijSymmetrySz = nullptr;

  /// Ragged, rows 1..NInnerCells: the cells across the faces of an interior cell, ghost and halo cells
  /// included.
  int** CellCell = nullptr;
  /// Rows 1..NInnerCells: nodes of a cell at row[1..CellLnodsNumber[cell]]. row[0] is not the length here.
  int** CellLnods = nullptr;
  /// Ragged, rows 1..NInnerCells: numbers of the cell's faces, each within its group.
  int** CellFace = nullptr;
  /// Rows 1..NInnerCells, shaped like CellFace: the group of each of those faces, 0 inner, 1 wall, 2 inlet, 3
  /// outlet, 5 symmetry, 101 partition. row[0] is not read.
  int** CellFaceType = nullptr;

  int NCell = 0;        ///< all cells: interior, ghost and halo
  int NInnerCells = 0;  ///< interior cells
  int NInnerFaces = 0;  ///< faces between two interior cells
  int NNode = 0;        ///< nodes

  int* CellLnodsNumber = nullptr;  ///< [1..NInnerCells] number of nodes of a cell

  double *ijInletxc = nullptr, *ijInletyc = nullptr, *ijInletzc = nullptr;  ///< [1..NInlet] face centre, L
  double *ijWallxc = nullptr, *ijWallyc = nullptr, *ijWallzc = nullptr;     ///< [1..NWall] face centre
  /// [1..NSymmetry] face centre
  double *ijSymmetryxc = nullptr, *ijSymmetryyc = nullptr, *ijSymmetryzc = nullptr;
  double *ijOutletxc = nullptr, *ijOutletyc = nullptr, *ijOutletzc = nullptr;  ///< [1..NOutlet] face centre

  // Ragged, one row per face of the group: the face's nodes. The first three of a row must span the face's
  // plane, because interpolation to faces uses them as a triangle.
  int** ijLnods = nullptr;          ///< rows 1..NInnerFaces
  int** ijParLnods = nullptr;       ///< rows 1..NParInterFace() of the partition faces
  int** ijWallLnods = nullptr;      ///< rows 1..NWall
  int** ijInletLnods = nullptr;     ///< rows 1..NInlet
  int** ijSymmetryLnods = nullptr;  ///< rows 1..NSymmetry
  int** ijOutletLnods = nullptr;    ///< rows 1..NOutlet

  /// Ragged, rows 1..NNode: the cells around a node, including the ghost and halo cells beyond the boundary
  /// and partition faces that touch it.
  int** NodeCell = nullptr;

  int* ijCV = nullptr;  ///< [1..NInnerFaces] side that receives the + flux
  int* ij = nullptr;    ///< [1..NInnerFaces] the other side
  /// [1..NInnerFaces] area vector, from ijCV to ij, L^2
  double *ijSx = nullptr, *ijSy = nullptr, *ijSz = nullptr;
  double *ijxc = nullptr, *ijyc = nullptr, *ijzc = nullptr;  ///< [1..NInnerFaces] face centre, L
  /// [1..NInnerFaces] 1: only the ijCV side takes the face's flux; any other value: both
  int* FaceType = nullptr;
};

/// The faces between this partition and its neighbours. The accessors return the current value, have no side
/// effects and may be called at any time. On a single partition the count is 0 and the arrays may be null.
class CPartitionFace_DLL {
 public:
  virtual ~CPartitionFace_DLL() = default;

  virtual int NParInterFace() = 0;  ///< number of partition faces
  virtual int* ijParCV() = 0;       ///< [1..NParInterFace()] interior cell of this partition
  virtual int* ijPar() = 0;         ///< [1..NParInterFace()] halo cell
  virtual double* ijParSx() = 0;    ///< [1..NParInterFace()] area vector, from ijParCV to ijPar, L^2
  virtual double* ijParSy() = 0;    ///< see ijParSx()
  virtual double* ijParSz() = 0;    ///< see ijParSx()
  virtual double* ijParxc() = 0;    ///< [1..NParInterFace()] face centre, L
  virtual double* ijParyc() = 0;    ///< see ijParxc()
  virtual double* ijParzc() = 0;    ///< see ijParxc()
  /// [1..NParInterFace()] weight of the ijPar side, as Lamda of the mesh
  virtual double* ParInterFace_Lamda() = 0;
  virtual int* FaceType_Partition() = 0;  ///< [1..NParInterFace()] as FaceType of the mesh
};

/// The solver's global variables, as far as the operators use them.
class CZyn3dGV {
 public:
  virtual ~CZyn3dGV() = default;

  /// [1..NCell] work arrays of the iterated Green-Gauss gradient, which overwrites them with the gradient
  /// before the last sweep, U/L. They belong to the operator during a call; afterwards their content is of no
  /// use to the solver.
  double *PrevGradX = nullptr, *PrevGradY = nullptr, *PrevGradZ = nullptr;

  double* ResetRealBlock = nullptr;  ///< [1..4] cleared to 0.0 by the cell operator's point interpolation
  int* ResetIntBlock = nullptr;      ///< [1..4] cleared to 0 by the cell operator's point interpolation

  /// The run's file name, NUL-terminated, ending in a dot and three letters. The names of the settings files
  /// are made from it.
  char* BaseFileName = nullptr;

  /// Non-zero: gradients exchange by DDM_IExch_Start and DDM_IExch_Wait; zero: by DDM_Exch. The same on all
  /// partitions.
  unsigned char UseNonBlockingExch = 0;
};

/// The solver's accelerator data, opaque. The operators copy its first pointer-sized word when they receive
/// the object.
class CZYNGVGPU {
 public:
  virtual ~CZYNGVGPU() = default;
};

/// The solver's threading data, opaque.
class CZYNGVOpenMP {
 public:
  virtual ~CZYNGVOpenMP() = default;
};
