#pragma once

#include <cstdint>
#include <vector>

#include "foundation/CZYNVector.h"
#include "foundation/Cpp_DataStructure.h"
#include "foundation/Export.h"
#include "foundation/IBCnode.h"

class CCommunication;
class CPartitionFace_DLL;
class CZYN3DFiniteVolumeMesh;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZYNKNCMPCompParm;
class CZYNOptKer;
class CZyn3dGV;
class PieceStore;
struct WeightSums;

/// Value and gradient of cell fields at free points in space, such as points on a body immersed in the mesh.
///
/// The stencil of a point consists of cells that the caller marks as usable, found by one of three methods:
/// 1. all cells in the first cube around the point that holds the wanted number of them;
/// 2. the nearest of these, as many as wanted;
/// 3. (default) the one or two nearest cells, the seeds, and all cells that share a mesh node with them.
///
/// For methods 1 and 2 the weights w of an operator D, one of value, d/dx, d/dy, d/dz, solve
///   sum_k w_k kernel(|X_k - X_j|) = D kernel(|x - X_j|) at x = p, the point, for every member j of the stencil,
/// with the support radius Span times a length measured on the stencil. Method 3 takes two steps. The same system
/// stands on the seeds and the mesh nodes around them. The value at each of these nodes is in turn expressed, by such
/// a system, through the cells around it, and the weights of the nodes are passed on to these cells. None of the
/// systems has a polynomial term: constants are reproduced approximately, better the wider the support, and the report
/// at the end of the set-up says how well.  @cite wendland1995
///
/// Call sequence: construct; `getZyn3dGV` with a mesh, `getPartitionFace`; `SetZYNKNCMP` if the settings come from
/// the solver's parameters instead of from the settings file; `Initialize_IBInterpolateData`;
/// `Multiply_IBRBFCoefficent` as often as needed. The object does not record its stage: a call out of order reaches a
/// null pointer. For bodies that move, `Initialize_IBInterpolateData` may run again; it first releases what the
/// earlier one built. The mesh and the partition faces must stay what they were at the set-up. Nothing is collective:
/// the points of a partition are served from its own cells, ghost and halo cells included.
///
/// The setters are called `get...` because the object *gets* its objects from the caller. It *borrows* all of them
/// and destroys none.
///
/// Copying copies pointers, tables included, except for the three CZYNVector members: only one of two such objects
/// may be destroyed or set up again. Assignment leaves behind what its left side held.
///
/// Thread safety: one thread at a time per object. `Multiply_IBRBFCoefficent` only reads the object, so several
/// threads may run it into arrays of their own while nothing else runs.
///
/// Notation: `[1..n]` is a 1-based array of n+1 elements, element 0 unused. A ragged row has its number of entries in
/// element 0. L is the mesh's unit of length, U that of the field. The *position* of a cell is where `m_pIBCnode`
/// puts it: its centre, or the face centre for the ghost cell of a wall, inlet or outlet.
class ZYN_EXPORT CZynIBRBFInternalObject {
 public:
  CZynIBRBFInternalObject();
  CZynIBRBFInternalObject(CZynIBRBFInternalObject const&);
  CZynIBRBFInternalObject& operator=(CZynIBRBFInternalObject const&);

  /// Frees the tables. It touches no host object, so these may be gone by then.
  virtual ~CZynIBRBFInternalObject();

  // Lifecycle and settings: CZynIBRBFInternalObject.cpp

  /// Stores `pGV`, and each of the other three unless it is null: a null keeps the earlier object.
  /// @return 1; -1 for a null `pGV`, with a line of failure text and nothing stored
  int getZyn3dGV(CZyn3dGV* pGV, CZYNGVGPU* pGPU, CZYNGVOpenMP* pOpenMP, CZYN3DFiniteVolumeMesh* pMesh);

  /// @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getPartitionFace(CPartitionFace_DLL* pPartFace);

  /// Not needed: nothing of the object is called.
  /// @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getCommunication(CCommunication* pComm);

  /// From now on the settings come from these parameters, and no file is read or written. A null keeps the earlier
  /// object.
  /// @return 1
  int SetZYNKNCMP(CZYNKNCMPCompParm* pKNCMP);

  /// The whole set-up: reads the settings, finds the stencil of every point, derives its coefficients, and prints how
  /// well they reproduce a constant.
  ///
  /// If there are fewer usable cells than a search wants, it takes those that there are. A point without any gets an
  /// empty stencil and the result 0.0. A singular system, such as one with two members at one place, is not reported;
  /// it shows in the report as NaN or large errors.
  /// @param[in] pCellMark  [1..NCell] a cell is usable if and only if its mark is below 0.0. The fields that are
  ///                       interpolated later must be filled there. For method 3, a usable ghost or halo cell without
  ///                       a row of nodes in the mesh's CellLnods counts as one without nodes
  /// @param[in] nIB        number of points; 0 is fine
  /// @param[in] x,y,z      [1..nIB] points, L. Not kept. Element 0 must exist, since the report may read it
  /// @pre the setters were called, with a mesh
  /// @return 0
  int Initialize_IBInterpolateData(double* pCellMark, int nIB, double* x, double* y, double* z);

  /// Replaces the tables of an earlier set-up by zeroed ones for `nIB` points, still without rows.
  /// @return 0
  int Initialize_IB_memory_allocate(int nIB);

  /// Reads `Span`, `iSearch_method`, `Search_distance` and `Search_number` from `RBFFileName`. A missing file is
  /// written with the defaults. A file whose first line is not 1002 is replaced by one with the defaults, and its
  /// content is lost. Lines count by their place; keys are not compared and values not validated. If no file can be
  /// read, all four keep their values.
  /// @pre SetIBNodeCollation: the default distance is twice `MeanDistance`
  /// @return 0
  int ReadRBFbackdoorfile();

  /// Takes the same four values from the solver's parameters; a negative distance stands for twice `MeanDistance`.
  /// @pre SetZYNKNCMP, SetIBNodeCollation
  /// @return 0
  int ReadRBFbackdoorfile_DLL();

  /// ReplaceExtension() of foundation/SettingsText.h. @return 1
  int ChangeFileName(char* result, char const* extension, char* name);

  /// SplitSettingsLine() of foundation/SettingsText.h. @return 1 when the line has a "=", else 0
  int StrCopyAB(char const* line, char* key, char* value);

  // Positions, node rows and tree: CZynIBRBFInternalObject_Collation.cpp

  /// Gives cell numbers their positions, measures the mesh, sets the range of the tree, and marks the nodes of walls,
  /// inlets and outlets.
  /// @note Three gaps are part of the definition of the stencils: ghost cells of symmetry faces stay at the origin
  /// with kind 0, nodes of symmetry and partition faces are not marked, and outlet centres do not widen the tree's
  /// range.
  /// @pre Initialize_IB_memory_allocate @return 1
  int SetIBNodeCollation();

  /// Lists the usable cells around each mesh node, none twice. @pre SetIBNodeCollation
  /// @param[in] pCellMark  [1..NCell]
  /// @return 0
  int Create_ppRBFiNodeConn(double* pCellMark);

  /// Enters the usable cells in the tree under consecutive identities. @pre SetIBNodeCollation
  /// @param[in] pCellMark  [1..NCell]
  /// @return 0
  int SetIBADTress(double* pCellMark);

  // Stencils: CZynIBRBFInternalObject_Stencil.cpp

  /// Finds the stencils of all points by method `iMethod`. Methods other than 1, 2, 3 have none.
  /// @pre SetIBADTress; for method 3 also Create_ppRBFiNodeConn
  /// @param[in] x,y,z      [1..m_iNIBNode] L
  /// @param[in] dDistance  not used
  /// @param[in] iNumber    wanted number of members for methods 1 and 2
  /// @return 0
  int SearchIBADTress(double* x, double* y, double* z, int iMethod, double dDistance, int iNumber);

  /// Methods 1 and 2. The support length is half the edge of the cube for method 1, and the distance of the farthest
  /// member for method 2.
  void Search_by_Node_control(double* x, double* y, double* z, int iMethod, int iNumber);

  /// Method 3. The support length is the greater distance of the first two cells.
  ///
  /// There are two seeds, unless the first of the two cells that Dis_Sorting puts in front is farther than the second
  /// by 1e-6 L or more: then that farther cell is the single seed. The difference keeps its sign, since the stencils
  /// are defined so. If there is only one usable cell, it is the single seed.
  void Search_by_Topology_control(double* x, double* y, double* z);

  /// The stencil of point i for method 3: the seeds, then the usable cells around their nodes. Keeps the nodes too
  /// and, for each of them, the stencil positions of its cells.
  /// @param[in] pSeed  [0..nSeed-1] cell numbers, distinct
  /// @return number of members
  int CountingNodeToCellconnectionNumber(int i, int nSeed, int* pSeed);

  /// Sorts both arrays by distance, ascending and stable, in one pass less than a bubble sort needs.
  ///
  /// The two-seed rule depends on what the missing pass leaves: for n of 3 or more everything is in order, except
  /// that the two smallest change places if the smallest distance stood at the last place (2, 3, 1 gives 2, 1, 3).
  /// For n up to 2 nothing is sorted.
  /// @param[in,out] pID,pDistance  [0..n-1]
  void Dis_Sorting(int* pID, double* pDistance, int n);

  // Coefficients and their application: CZynIBRBFInternalObject_Weights.cpp, with the systems in PointNodes.h and
  // KernelSystem.h

  /// Methods 1 and 2: the coefficients of value and gradient at point i, from one system on the stencil's cells.
  /// @pre the stencil of i is found; x, y, z [1..m_iNIBNode], L
  /// @return 1
  int DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z);

  /// Method 3: the same from a system on the seeds and the mesh nodes around them, the nodes' weights passed on to
  /// cells. It adds to the coefficients of the point, which the search leaves at zero; their tags stay 0.
  /// @pre the stencil of i is found by method 3; x, y, z [1..m_iNIBNode], L
  /// @return 1
  int DeriveIBCoefficentBysolveDQfullMatrix_30_03(int i, double* x, double* y, double* z);

  /// Weights of the usable cells around a mesh node for the value at the node.
  /// @param[in]  node     1..NNode
  /// @param[out] pWeight  [1..n], n the length of the node's row, in its order
  /// @pre Create_ppRBFiNodeConn @return 1
  int DeriveIBfiBysolveDQfullMatrix_03(int node, double* pWeight);

  /// Value and gradient of a field at all points: the sums over the stencil of point i, in its order, of the field
  /// times the coefficients.
  ///
  /// Allocates and exchanges nothing: `pField` is used in ghost and halo cells as it stands. Points without a stencil
  /// get 0.0.
  /// @param[in]  pField              [1..NCell], U; not one of the outputs
  /// @param[out] pValue              [1..m_iNIBNode], U, overwritten
  /// @param[out] pDfdx,pDfdy,pDfdz   [1..m_iNIBNode], U/L, overwritten
  /// @pre Initialize_IBInterpolateData @return 0
  int Multiply_IBRBFCoefficent(double* pField, double* pValue, double* pDfdx, double* pDfdy, double* pDfdz);

  // Report: CZynIBRBFInternalObject_Report.cpp

  /// Prints how well the constant 1.0 is reproduced: root mean square and largest error of value and derivatives, and
  /// the point of the largest. It replaces the sums of squares by their root mean squares, so it runs once per
  /// set-up; without points these are not numbers.
  /// @note Coordinates are printed ten times as large as they are. Without any error, those of element 0 are printed.
  /// @param[in] x,y,z  [1..m_iNIBNode], L, of the set-up
  /// @return 0
  int PrintDebugMessage(double* x, double* y, double* z);

  CPartitionFace_DLL* m_pPartFace = nullptr;
  CCommunication* m_pComm = nullptr;    ///< not used
  CZYNGVGPU* m_pGVGPU = nullptr;        ///< not used
  CZYNGVOpenMP* m_pGVOpenMP = nullptr;  ///< not used
  std::uint64_t m_GPUHead = 0;          ///< first word of the accelerator object; nothing reads it

  IBCnode* m_pIBCnode = nullptr;  ///< [1..NCell] position of a cell, L, with the cell number as tag

  int iSearch_method = 3;        ///< 1, 2, 3; any other: no stencils
  double Search_distance = 0.0;  ///< L; read from the settings, used by nothing
  int Search_number = 20;        ///< wanted size of a stencil, methods 1 and 2

  int** m_ppIBConn = nullptr;          ///< [1..m_iNIBNode] ragged: cells of the stencil
  IBCnode** m_ppIBCoef = nullptr;      ///< [1..m_iNIBNode][1..n] coefficients of d/dx, d/dy, d/dz, 1/L
  double** m_ppIBValueCoef = nullptr;  ///< [1..m_iNIBNode][1..n] coefficients of the value
  int** ppRBFiNodeConn = nullptr;      ///< [1..NNode] ragged: usable cells around a mesh node

  double Xmax = 0.0, Ymax = 0.0, Zmax = 0.0;  ///< range of the tree, L
  double Xmin = 0.0, Ymin = 0.0, Zmin = 0.0;
  /// Mean distance between the two cells of an inner face, L: the step of the searches.
  double MeanDistance = 0.0;

  char RBFFileName[1024] = "";
  double Span = 500.0;  ///< support radius as a multiple of the length measured on the stencil

  int m_iNIBNode = 0;   ///< number of points
  int m_iNDerived = 0;  ///< number of points whose coefficients are derived

  /// @name Errors for the constant 1.0: sum of squares (after the report the root mean square), the largest, its
  /// point, and the result there
  /// @{
  double m_dFiSumSq = 0.0, m_dFiMaxError = 0.0;
  int m_iFiMaxPoint = 0;
  double m_dFiMaxAnalysis = 0.0, m_dFiMaxRBF = 0.0;
  double m_dDfdxSumSq = 0.0, m_dDfdxMaxError = 0.0;
  int m_iDfdxMaxPoint = 0;
  double m_dDfdxMaxRBF = 0.0;
  double m_dDfdySumSq = 0.0, m_dDfdyMaxError = 0.0;
  int m_iDfdyMaxPoint = 0;
  double m_dDfdyMaxRBF = 0.0;
  double m_dDfdzSumSq = 0.0, m_dDfdzMaxError = 0.0;
  int m_iDfdzMaxPoint = 0;
  double m_dDfdzMaxRBF = 0.0;
  /// @}

  int* m_piNodeKind = nullptr;     ///< [1..NCell] 1 interior, 2 wall, 3 inlet, 4 outlet, 5 partition, 0 none
  int* m_piCellToBlock = nullptr;  ///< [1..NCell] identity of a cell in the tree, 0 if it is not there
  int* m_piBlockToCell = nullptr;  ///< [1..number of identities] the cell of an identity
  double* m_pIBSupportLength = nullptr;    ///< [1..m_iNIBNode] L; times Span: support radius
  unsigned char* m_pIBTwoSeeds = nullptr;  ///< [1..m_iNIBNode] method 3: 1 for two seeds, 0 for one
  int** m_ppIBNodeConn = nullptr;          ///< [1..m_iNIBNode] method 3, ragged: mesh nodes of the seeds

  CZYNVector<int, 1> m_CellLocalID;  ///< [1..NCell] method 3: position in the stencil of the last point, or 0
  CZYNVector<int, 1> m_NodeLocalID;  ///< [1..NNode] the same for its nodes
  CZYNVector<bool, 1> m_bBoundaryNode;  ///< [1..NNode] on a wall, inlet or outlet

  CZYNOptKer* m_pADTree = nullptr;  ///< boxes around the positions of the usable cells; owned

  /// [1..m_iNIBNode] method 3: row j belongs to the j-th node of the point; entry k is the stencil position of
  /// the k-th cell of the node.
  Cpp_DataStructure* m_pIBNodeCellTable = nullptr;

  CZyn3dGV* m_pGV = nullptr;
  CZYN3DFiniteVolumeMesh* m_pMesh = nullptr;
  char ErrorMsg[1024];  ///< "Operator Gradient Error = " and one line per failure of a setter
  CZYNKNCMPCompParm* m_pKNCMP = nullptr;  ///< source of the settings when not null

 private:
  struct Candidates;
  struct StencilWork;
  struct DerivationWork;

  // Lifecycle and settings
  void ReleaseTables();
  void ResetForNewSetUp();

  // Positions
  void MarkBoundaryNodes();

  // Stencils
  int ChooseSeeds(int i, Candidates const& candidates);
  int CollectStencil(int i, int nSeed, int const* seeds, StencilWork& work);
  void FindStencils(double const* x, double const* y, double const* z, int iMethod, int iNumber,
                    bool withCoefficients);
  void FindByNode(double const* x, double const* y, double const* z, int iMethod, int iNumber,
                  bool withCoefficients);
  void FindByTopology(double const* x, double const* y, double const* z, bool withCoefficients);
  int** MakePositionRows(int i, int const* nodes);
  void ClearLocalNumbers();
  void ClearLocalNumbersOf(int i);
  int* CreateStencilRow(int i, int n);
  void CreateCoefficientRows(int i, int n);

  // Coefficients and report
  void DeriveAllPoints(double const* x, double const* y, double const* z);
  void DerivePoint(int i, double x, double y, double z, DerivationWork& work);
  void DerivePointByNodes(int i, double x, double y, double z, DerivationWork& work);
  void DeriveNewPoint(int i, double x, double y, double z, DerivationWork& work);
  void DeriveNewPointByNodes(int i, double x, double y, double z, DerivationWork& work);
  double const* WeightsOfNode(int node, DerivationWork& work);
  void DeriveNode(int node, double* weights, DerivationWork& work);
  void AddByNodes(int i, double x, double y, double z, DerivationWork& work);
  void GatherErrors(int i, WeightSums const& sums);

  PieceStore* positionStore_ = nullptr;  // the rows of m_pIBNodeCellTable; owned
};
