#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Export.h"
#include "rbf_cell/RBFnode.h"

class CCommunication;
class CPartitionFace_DLL;
class CZYN3DFiniteVolumeMesh;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZYNOptKer;
class CZyn3dGV;
struct BoundingBox;

/// Radial-basis gradient of cell fields: the object behind gradient type 2 of COperatorGradient.
///
/// The stencil of an interior cell is the cell itself and its neighbours in the order of the mesh's CellCell
/// row. Its weights w for a derivative D solve the differential-quadrature system
///   sum_k w_k kernel(|X_k - X_j|) + m = D kernel(|x - X_j|) at x = X_cell, for every member j,
///   sum_k w_k = 0,
/// once, at set-up; a gradient is then three dot products per cell. Constants have no slope up to rounding;
/// there is no linear term, so a linear field is reproduced only as far as the support is wide.
/// @cite wendland1995
///
/// Call sequence: construct; `getZyn3dGV` with a mesh, `getPartitionFace`, `getCommunication`;
/// `InitialRBFSetting`; `DeriveRBFweighting`; `MultiplyRBFCoefficent` as often as needed. No stage is
/// recorded: a call out of order reaches a null pointer. A repeated set-up leaves the former tables behind,
/// unfreed. Nothing is collective.
///
/// The setters are called `get...` because the object *gets* its objects from the caller. It *takes over* all
/// of them but the mesh: the destructor destroys the global variables, partition faces, communication,
/// accelerator and threading objects. COperatorGradient therefore never destroys its cell operator.
///
/// Copying copies pointers, host objects and tables included: of two such objects only one may be destroyed,
/// and what the left side of an assignment held is left behind.
///
/// Thread safety: one thread at a time per object.
///
/// Notation: `[1..n]` is a 1-based array of n+1 elements; a row table has null for every row that is not
/// used.
class ZYN_EXPORT CZynRBFInternalObject {
 public:
  CZynRBFInternalObject();
  CZynRBFInternalObject(CZynRBFInternalObject const&);
  CZynRBFInternalObject& operator=(CZynRBFInternalObject const&);

  /// Frees the tables, then destroys the host objects that it was given, the mesh excepted. The mesh and the
  /// partition faces must be alive until then.
  virtual ~CZynRBFInternalObject();

  // Lifecycle: CZynRBFInternalObject.cpp

  /// Stores `pGV`; each of the other three only when it is not null, so that a null keeps an earlier value.
  /// @return 1; -1 for a null `pGV`, with a line of failure text and nothing stored
  int getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP, CZYN3DFiniteVolumeMesh* pMesh);

  /// @return 1; -1 for null, with a line of failure text and the earlier value kept
  int getPartitionFace(CPartitionFace_DLL* pPartFace);

  /// @return 1; -1 for null, with a line of failure text and the earlier value kept
  int getCommunication(CCommunication* pComm);

  /// The failure text gathered so far: "Operator Gradient Error = " and one line per failure, at most 1023
  /// characters. Owned by the object.
  char const* getErrorMsg();

  /// Allocates the tables of the cells, reads or writes the settings file, places every cell number at a
  /// point and collects the stencils. @return 1
  int InitialRBFSetting();

  /// Reads `Span` and `iShape_Normalize` from `m_szRBFFileName`. The file is written with the defaults when
  /// it is missing or has another first line than 1001; in the latter case what it held is lost. Lines count
  /// by their place, keys are not compared, nothing is validated. Without a readable file both keep their
  /// values.
  /// @return 0
  int ReadRBFbackdoorfile();

  /// ReplaceExtension() of foundation/SettingsText.h. @return 1
  int ChangeFileName(char* result, char const* extension, char* name);

  /// SplitSettingsLine() of foundation/SettingsText.h. @return 1 when the line has a "=", else 0
  int StrCopyAB(char const* line, char* key, char* value);

  // Points and stencils: CZynRBFInternalObject_Stencil.cpp

  /// Places interior cells and partition halo cells at their centres, the ghost cells of walls, inlets and
  /// outlets at their face centres, and enters them in the tree.
  /// @note The ghost cells of symmetry faces are left out on purpose: they stay at the origin with kind 0.
  /// @return 1
  int SetNodeCollation();

  /// Stencils, support lengths and extents of all interior cells. @pre SetNodeCollation @return 1
  int SetCellToCellconnection();

  // Weights of the cells: CZynRBFInternalObject_Weights.cpp

  /// Derives the weights of all interior cells in ascending order and prints the largest sums of a cell's
  /// weights and multiplier. @pre InitialRBFSetting @return 1
  int DeriveRBFweighting();

  /// Derives the weights of one interior cell anew.
  /// @note Neither a singular system nor a division by zero (a stencil without extent) is reported; they show
  /// as large or missing residuals and as NaN in the weights.
  /// @return 1
  int DeriveCellCoefficentBysolveDQfullMatrix(int cell);

  // Face family: CZynRBFInternalObject_Face.cpp. Nothing in the library calls it. Kinds of faces: 1 inner, 2
  // wall, 3 inlet, 4 outlet, 5 partition.

  /// Allocates the face tables: rows for two nodes a face with mode 0, rows for all cells around a face with
  /// mode 1 (none are counted around faces of any kind whose number is beyond the partition faces), no rows with
  /// any other mode. A second call leaves the former tables behind. @pre InitialRBFSetting @return 0
  int faceToCellconnection_memoryallocate(int mode);

  /// Number of distinct cells around a face: the c of NodeCell row i, up to the length of the NodeCell row of
  /// the face's i-th node, over all its nodes.
  /// @note Two asymmetries are on purpose: the nodes come from the partition faces' table whatever the kind,
  /// and the cells from the row of the running number i instead of the node's. Entries beyond the end of a
  /// NodeCell row count as nothing, and so does a face whose number is beyond the partition faces.
  int CountingfaceToCellconnectionNumber(int face, int kind);

  /// Does nothing: the face family takes its two nodes from the mesh. @return 0
  int SetfaceToCellconnection(int);

  /// @name Two-node weights of all faces of a kind, with the residuals printed. @return 1
  /// @{
  int DeriveRBFweighting_InnerfaceFlux();
  int DeriveRBFweighting_InletfaceFlux();
  int DeriveRBFweighting_OutletfaceFlux();
  /// Runs the inlet operation over wall face numbers, on purpose, as far as there are inlet faces.
  int DeriveRBFweighting_WallfaceFlux();
  int DeriveRBFweighting_PartInterfaceFlux();
  /// @}

  /// @name Two-node weights of one face: of d/dx, d/dy, d/dz into the kind's weight table, for an inner face
  /// of the derivative along its normal into `m_ppRBFInnerFaceFlux`. @pre faceToCellconnection_memoryallocate
  /// @return 1
  /// @{
  int DeriveInletFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveOutletFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveWallFaceCoefficentBysolveDQfullMatrix(int f);
  int DerivePartInterFaceCoefficentBysolveDQfullMatrix(int f);
  int DeriveInnerFaceCoefficentBysolveDQfullMatrix(int f);
  /// @}

  // Application: CZynRBFInternalObject_Apply.cpp

  /// (gx, gy, gz)_i = sum over the stencil of i, in stencil order, of phi times the weights.
  ///
  /// Allocates and exchanges nothing: `phi` is used in ghost and halo cells as it stands.
  /// @param[in]  phi       [1..NCell], U
  /// @param[out] gx,gy,gz  [1..NCell], U/L, overwritten: wall and inlet ghost cells get the gradient of their
  /// interior
  ///                       cell, all other ghost and halo cells 0.0
  /// @pre InitialRBFSetting; before DeriveRBFweighting the result is zero
  /// @return 1
  int MultiplyRBFCoefficent(double* phi, double* gx, double* gy, double* gz);

  /// The same for inner faces and their two cells, from `m_ppRBFInnerFaceCoef`. Nothing in the library fills
  /// that table (the inner weights go to `m_ppRBFInnerFaceFlux`), so the result is zero unless the caller
  /// fills it.
  /// @param[in]  phi       [1..NCell]
  /// @param[out] fx,fy,fz  [1..NInnerFaces], overwritten
  /// @return 1
  int MultiplyRBFCoefficent_InnerfaceFlux(double* phi, double* fx, double* fy, double* fz);

  // Immersed-boundary points: CZynRBFInternalObject_IB.cpp. Nothing in the library calls these six, and they do
  // not make a working path by themselves: CZynIBRBFInternalObject interpolates to points. The caller of the
  // search supplies a filled tree and the map of its identities.

  /// Reads the settings, makes the tables of `nIB` points without rows, places the cells, and prints two lines
  /// per cell; no point is searched. The points' tables, `m_pRBFnode` and `m_piNodeKind` are made
  /// anew and the former ones left behind, as in every repeated set-up of this class: a copy of the object may
  /// still read them.
  /// @param[in] nIB  number of points; the other arguments are not used
  /// @return 0
  int Initialize_IBInterpolateData(double* pCellMark, int nIB, double* x, double* y, double* z, int iMethod,
                                   double dDistance, int iNumber);

  /// Measures the mesh, clears the two reset blocks of the global variables and places interior cells and
  /// partition halo cells at their centres, the ghost cells of walls, inlets and outlets at their face centres.
  /// @note The ghost cells of symmetry faces are left out on purpose; no tree is touched.
  /// @return 1
  int SetIBNodeCollation();

  /// Prints the number of cells and the running number for every cell, and does nothing else, on purpose.
  /// @return 0
  int SetIBADTress(double* pCellMark, std::vector<int> vCell, CZYNOptKer tree, int* piCellToBlock);

  /// Stencils of all points: the entries of `tree` in a cube whose half-width is `dDistance` (method 1), or the
  /// first of 1, 2, 3... mean cell distances that holds `iNumber` of them (method 2), in the tree's order. By any
  /// other method they are empty.
  ///
  /// The cube is centred at (x[i], x[i], x[i]), on purpose: `y` and `z` are not read. With fewer entries in the
  /// tree than the number, the cube stops growing when it covers all cells.
  /// @param[in]  x              [1..m_iNIBNode], L
  /// @param[in]  piBlockToCell  [1..] cell number of an identity of the tree
  /// @param[in]  tree           shares its entries with the object it was copied from
  /// @param[out] pSupport       [1..m_iNIBNode] half-width of the cube, L
  /// @pre Initialize_IBInterpolateData
  /// @return 0
  int SearchIBADTress(double* x, double* y, double* z, int iMethod, double dDistance, int iNumber,
                      int* piBlockToCell, CZYNOptKer tree, double* pSupport);

  /// Coefficients of value and gradient at point i from a system on the cells of its stencil, all in double
  /// precision and without the constant term that the systems of the cells have. @cite wendland1995
  /// @param[in] x,y,z     [1..m_iNIBNode], L
  /// @param[in] pSupport  [1..m_iNIBNode] L; times `Span`: support radius
  /// @pre SearchIBADTress @return 1
  int DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z, double* pSupport);

  /// Sets the four outputs to 0.0 at 1..m_iNIBNode, and that is all, on purpose. @return 0
  int Multiply_IBRBFCoefficent(double* pField, double* pValue, double* pDfdx, double* pDfdy, double* pDfdz);

  CPartitionFace_DLL* m_pPartFace = nullptr;
  CCommunication* m_pComm = nullptr;  ///< destroyed at the end, not used otherwise
  CZYNGVGPU* m_pGVGPU = nullptr;
  CZYNGVOpenMP* m_pGVOpenMP = nullptr;
  std::uint64_t m_GPUHead = 0;      ///< first word of the accelerator object; nothing reads it
  CZYNOptKer* m_pADTree = nullptr;  ///< boxes around the points of all cells; owned, not searched for cells
  RBFnode* m_pRBFnode = nullptr;    ///< [1..NCell] the point of a cell number
  RBFnode* m_pStencilExtent = nullptr;  ///< [1..NCell] extents of a cell's stencil along the axes, L
  int m_iWorstElement = 0;              ///< cell or face at which a residual maximum last rose
  double MAXResidual_X = 0.0;           ///< largest sum of x weights; never negative, as it starts at 0
  double MAXResidual_Y = 0.0;
  double MAXResidual_Z = 0.0;
  double MAX_Weithting_Residual_Normal = 0.0;  ///< largest multiplier of an inner face
  double m_dStoredLimit = 0.0;                 ///< not read
  double m_dStoredFactor = 0.0;                ///< not read
  char m_szRBFFileName[1024] = "";
  double Span = 500.0;       ///< support radius over the stencil's length
  int iShape_Normalize = 0;  ///< 1: shape-normalised form of the kernel; any other value: plain form

  /// [1..NInnerCells] stencil: row[0] members at row[1..row[0]], the cell first; one element more, left zero.
  int** m_ppRBFCellConn = nullptr;
  int** m_ppRBFInnerFaceConn = nullptr;  ///< stencils of faces: row[0] set, members left zero
  int** m_ppRBFWallFaceConn = nullptr;
  int** m_ppRBFInletFaceConn = nullptr;
  int** m_ppRBFOutletFaceConn = nullptr;
  int** m_ppRBFPartInterFaceConn = nullptr;
  /// [1..NInnerCells] weights, 1/L, at 1..n in the order of the stencil; the multiplier at n+1. (Of the
  /// shape-normalised form: of the derivatives with respect to the scaled coordinates.)
  RBFnode** m_ppRBFCellCoef = nullptr;
  RBFnode** m_ppRBFInnerFaceCoef = nullptr;  ///< weights of faces at 1, 2
  RBFnode** m_ppRBFPartInterFaceCoef = nullptr;
  RBFnode** m_ppRBFInletFaceCoef = nullptr;
  RBFnode** m_ppRBFWallFaceCoef = nullptr;
  RBFnode** m_ppRBFOutletFaceCoef = nullptr;
  double** m_ppRBFInnerFaceFlux = nullptr;  ///< [1..NInnerFaces] normal weights at 1, 2, multiplier at 3

  double* m_pSupportLength = nullptr;  ///< [1..NCell] greatest distance from a cell to its stencil, L
  int* m_piNodeKind = nullptr;  ///< [1..NCell] 1 interior, 2 wall, 3 inlet, 4 outlet, 5 partition, 0 none
  int* m_piNodeKindIndex = nullptr;         ///< [1..NCell] number of the cell or face within its kind
  double m_dBoundMax[3] = {0.0, 0.0, 0.0};  ///< range of the tree, x, y, z
  double m_dBoundMin[3] = {0.0, 0.0, 0.0};
  double m_dMeanCellDistance = 0.0;  ///< mean distance between the two cells of an inner face, L

  int m_iNIBNode = 0;                  ///< number of immersed-boundary points
  int** m_ppIBConn = nullptr;          ///< [1..m_iNIBNode] their stencils, each row an allocation of its own
  RBFnode** m_ppIBCoef = nullptr;      ///< their gradient weights, likewise
  double** m_ppIBValueCoef = nullptr;  ///< their value weights, likewise

  CZyn3dGV* m_pGV = nullptr;
  CZYN3DFiniteVolumeMesh* m_pMesh = nullptr;
  char m_szError[1024];

 private:
  struct CellWork;
  struct FaceNodes;

  // Lifecycle
  void AllocateCellTables();
  void ReleaseTables();
  void DestroyHostObjects();

  // Points and stencils
  void MeasureBounds();
  void CollateAll();
  void Collate(int c, double x, double y, double z, int kind, int index);
  void CollectStencil(int i);

  // Weights of the cells
  void DeriveCellCoefficents(int cell, CellWork& work);
  void StoreCellCoefficents(int cell, int n, double const* solution);
  void RaiseResidual(double residual, double& maximum, int element);
  void ClearResiduals();
  void PrintResiduals() const;

  // Face family
  void DeriveFaceCoefficents(FaceNodes const& nodes, int f, RBFnode** table);

  // Immersed-boundary points
  void CreateIBTables(int nIB);
  BoundingBox BoundsOfCells() const;
};
