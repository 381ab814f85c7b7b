#pragma once

#include <cstdint>
#include <memory>
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
class GrowingBoxSearch;
class KernelSystem;
enum class FaceKind : int;
struct FaceGroup;
template <typename Value>
struct DQVectorOf;
using DQVector = DQVectorOf<double>;

/// Radial-basis interpolation of a cell field to the faces of one type.
///
/// The value at a face is a weighted sum over its stencil of cells, v = sum_k w_k phi_k. The weights w of a place x
/// and nodes X_1..X_n solve, once, at set-up,
///   sum_l kernel(|X_k - X_l|) w_l = kernel(|x - X_k|), for every k,
/// without a constant term: constants are reproduced approximately, better the wider the support. The method,
/// `iSearch_method`, says what x and the nodes are:
///  1  x is the face's target point, the nodes are all cells of a cube around it;
///  2  the nodes are the `Search_number` cells of that cube that are nearest to x;
///  3  the nodes are the face's two cells and its vertices, these interpolated from the cells around them;
///  4  (default) P and E, two points on the line through x along the face's normal, one on each side, are
///     interpolated from the cells around them; the value at x is linear between P and E.
/// With any other value the object has no stencils, and Multiply_FaceRBFCoefficent nothing to apply.
/// @cite wendland1995
///
/// Face types: 1 inner, 2 wall, 3 inlet, 4 outlet, 5 partition, 6 symmetry. One object serves one type. The target
/// point is the face's centre, for a partition face the centre of its halo cell. By method 4, faces of types 2, 3, 4
/// and 6 have the value 0: there E is the target point itself, and the rows serve the derivative along the normal
/// alone.
///
/// Call sequence: construct; `getZyn3dGV` with a mesh, `getPartitionFace`, `getCommunication`, and `SetZYNKNCMP` if
/// the settings come from there instead of from the file; `Initialize_FaceInterpolateData` once;
/// `Multiply_FaceRBFCoefficent` as often as needed. The object does not record its stage: a call out of order reaches
/// a null pointer. Nothing is collective. The single steps of the set-up are public. You may call them one by one, in
/// the order of `Initialize_FaceInterpolateData`.
///
/// The setters are called `get...` because the object *gets* its objects from the caller. It *borrows* all of them;
/// they must outlive it. The mesh must not change after the set-up.
///
/// Copying copies pointers, tables included: a copy of an object that is set up shares its tables, and both
/// destructors free them. Copy only objects that are not set up yet.
///
/// Thread safety: one thread at a time per object.
///
/// Notation: `[1..n]` is a 1-based array of n+1 elements, element 0 unused. A row has its length in element 0 and its
/// entries behind it. A row of coefficients has as many elements as the row of cells that it belongs to, element 0
/// unused. A *position* is an index into a face's stencil. L is the mesh's unit of length, U that of the field.
class ZYN_EXPORT CZynFaceRBFInternalObject {
 public:
  CZynFaceRBFInternalObject();
  CZynFaceRBFInternalObject(CZynFaceRBFInternalObject const&);
  CZynFaceRBFInternalObject& operator=(CZynFaceRBFInternalObject const&);

  /// Frees the stencils and coefficients. Release_Memory frees the work tables: the set-up ends with it, and a caller
  /// of single steps calls it too.
  virtual ~CZynFaceRBFInternalObject();

  // Lifecycle and settings: CZynFaceRBFInternalObject.cpp

  /// Stores `gv`, and each of the other three unless it is null: a null keeps the earlier object.
  /// @return 1; -1 for a null `gv`, with a line of failure text and nothing stored
  int getZyn3dGV(CZyn3dGV* gv, CZYNGVGPU* gpu, CZYNGVOpenMP* openMP, CZYN3DFiniteVolumeMesh* mesh);

  /// Needed for every face type. @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getPartitionFace(CPartitionFace_DLL* partitionFaces);

  /// @return 1; -1 for null, with a line of failure text and the earlier object kept
  int getCommunication(CCommunication* communication);

  /// From now on the settings come from this object's block for faces, and no file is read or written. A null keeps
  /// the earlier object. @return 1
  int SetZYNKNCMP(CZYNKNCMPCompParm* parameters);

  /// The failure text so far: "Operator Gradient Error = " and one line for each failure, at most 1023 characters.
  /// Owned by the object.
  char const* getErrorMsg();

  /// The whole set-up for the faces of a type; run it once. Without a face of the type it does nothing and does not
  /// touch the settings file. A type outside 1..6 keeps the number of faces, which is 0 for a new object. A second
  /// run leaves the earlier results behind, unfreed, since copies may still read them, and begins the report anew.
  /// @note A singular system is not reported; it shows in the report that `bDebug` asks for.
  /// @pre the setters were called, with a mesh
  /// @return 0
  int Initialize_FaceInterpolateData(int faceType);

  /// Allocates the tables of faces and cells, zeroed, and constructs the trees. `m_ppFaceLnods`, `m_ppFaceGradCoef`
  /// and `m_pFaceSupport` are made only if `iSearch_method` is not 4 at this time; otherwise they are null.
  /// @pre `NFace` is set @return 0
  int Initialize_Face_memory_allocate();

  /// Frees all work tables and leaves them null. Stencils and coefficients stay. @return 0
  int Release_Memory();

  /// Reads `Span`, `iSearch_method`, `Search_distance`, `Search_number` and `bDebug` from `RBFFileName`. A missing
  /// file is written with the defaults. A file whose first line is not 1004 is replaced by one with the defaults, and
  /// its content is lost. Lines count by their place; keys are not compared and values not validated. If no file can
  /// be read, all settings keep their values.
  /// @pre SetFaceNodeCollation: the default distance is twice `MeanDistance`
  /// @return 0
  int ReadRBFbackdoorfile();

  /// Takes the same settings from the block of the parameter object; a negative distance stands for twice
  /// `MeanDistance`.
  /// @pre SetZYNKNCMP, SetFaceNodeCollation @return 0
  int ReadRBFbackdoorfile_DLL();

  /// ReplaceExtension() of foundation/SettingsText.h. @return 1
  int ChangeFileName(char* result, char const* extension, char* name);

  /// SplitSettingsLine() of foundation/SettingsText.h. @return 1 when the line has a "=", else 0
  int StrCopyAB(char const* line, char* key, char* value);

  // Points and trees: CZynFaceRBFInternalObject_Collation.cpp

  /// Gives every cell number its point and every face its target point, measures the mesh and makes the tables of
  /// connectivity. @pre Initialize_Face_memory_allocate @return 1
  int SetFaceNodeCollation();

  /// Enters all cells in `m_pCellTree`. @pre SetFaceNodeCollation @return 0
  int SetFaceADTress();

  /// Enters the faces of walls, inlets, outlets and symmetry planes in `m_pBoundaryTree`. @pre SetFaceNodeCollation
  /// @return 0
  int SetBoundaryCellADTress();

  /// Stencils of all faces, by the method that `iSearch_method` names. @pre SetFaceADTress @return 0
  int SearchFaceADTress();

  /// The cell nearest to a point among those of the first cube around it, with half-width 1, 2, 3... times
  /// `MeanDistance`, that holds any; of equally near ones the first in the tree's answer.
  /// @param x,y,z  L
  /// @return cell number, ghost and halo cells included; 0 if the tree is empty
  /// @pre SetFaceADTress
  int Search_ClosestCellID_byNode(double x, double y, double z);

  /// Sorts `dist` in ascending order and `ids` with it; equal distances keep their order. Distances that are not
  /// numbers end up where a sort that exchanges neighbours leaves them.
  /// @param[in,out] ids,dist  [0..n-1]
  void Dis_Sorting(int* ids, double* dist, int n);

  // Tables of connectivity: CZynFaceRBFInternalObject_Connectivity.cpp

  /// Makes `ppRBFiNodeConn`: the mesh's NodeCell rows, at boundary vertices together with the interior cells. No row
  /// holds a cell twice. @return 0
  int Create_ppRBFiNodeConn();

  /// Makes `m_ppRBFlnods`: the vertices of every cell. A ghost or halo cell has those of its face. @return 0
  int Create_m_ppRBFlnods();

  /// Makes `m_ppRBFCell33Conn`: the neighbours of every cell. An interior cell has those across its faces; a ghost
  /// cell its owner and the ghost cells that share exactly two vertices with it; a halo cell its owner.
  /// @pre Create_ppRBFiNodeConn, Create_m_ppRBFlnods @return 0
  int Create_m_ppRBFCell33Conn();

  /// Makes `m_ppRBFCell32Conn` and `m_ppRBFCell32Type`: the faces of every cell and their types. Nothing in the
  /// library calls it.
  /// @note Rows of ghost and halo cells are as long as the number of their faces, but only wall faces are entered;
  /// all else in them is 0, which a reader has to skip.
  /// @return 0
  int Create_m_ppRBFCell32Conn();

  // Stencils by node and by topology: CZynFaceRBFInternalObject_Stencil.cpp

  /// Of listed cells that stand at exactly the same point, keeps the first alone.
  /// @param[in]     n      number of listed cells
  /// @param[in,out] list   [1..n] cells; those kept come to the front in their order
  /// @param[in,out] marks  [1..NCell] for each listed cell its new position, 0 if it was dropped
  /// @return number of cells kept
  int Delete_Duplicate_Coordinate(int n, std::vector<int>& list, int* marks);

  /// Stencils of methods 1 and 2: the cells of the first cube around each target point, with half-width 1, 2, 3...
  /// times `MeanDistance`, that holds at least `Search_number` of them, or all cells if these are fewer; by method 2
  /// the nearest `Search_number` of these. @pre SetFaceADTress
  void Search_by_Node_control();

  /// Stencils of method 3: a face's two cells and the cells around its vertices. Prints one line per face.
  /// @pre SetFaceNodeCollation
  void Search_by_Topology_control();

  /// Stencil of face i: its two cells, at positions 1 and 2, and the cells around vertices. The rows of
  /// `m_pFaceRows[i]` hold the positions of the cells around each vertex.
  /// @param[in] i         1..NFace
  /// @param[in] pair      [0..1] the two cells
  /// @param[in] vertices  row of vertices
  /// @return size of the stencil
  int CountingNodeToCellconnectionNumber(int i, int* pair, int* vertices);

  // Virtual nodes: CZynFaceRBFInternalObject_VirtualNode.cpp

  /// Points P and E of all faces and their stencils, method 4. @pre SetFaceADTress
  void Search_by_normal_virtual_node();

  /// Places P and E of face i at the feet of the perpendiculars from the pair's points onto the line through the
  /// target point along S, and ties each to the nearest cell. On face types 2, 3, 4 and 6, E is the ghost cell
  /// itself.
  /// @param[in] pair  [0..1] the cell on P's side, the cell on E's side
  /// @param     Sx,Sy,Sz  area vector, L^2; its length does not matter but must not be 0
  /// @return 0
  int Set_VirtualNode_Coord_and_ClosestCellID(int faceType, int i, int* pair, double Sx, double Sy,
                                              double Sz);

  /// The same by another rule: P and E lie half-way along the normal to the nearest plane of the cell's other faces,
  /// each tied to its cell. Nothing in the library calls it. @return 0
  int Set_VirtualNode_Coord_InCellPE(int faceType, int i, int* pair, double Sx, double Sy, double Sz);

  /// Stencil of face i: the pair at positions 1 and 2, the cells tied to P and E, and the neighbours of these; cells
  /// at the same point count once. Rows 1 and 2 of `m_pFaceRows[i]` are the stencils of P and E as positions.
  /// @note A dropped twin has position 0, where the stencil has its length. The weights of such faces are defined
  /// with that length taken for a cell number.
  /// @return size of the stencil
  int CountingVirtualNodeToCellconnectionNumber_By33(int i, int* pair);

  /// The same with the cells around the vertices of the tied cells; cells at the same point all stay. Nothing in the
  /// library calls it. @return size of the stencil
  int CountingVirtualNodeToCellconnectionNumber(int i, int* pair);

  /// The same with the cells of cubes around P and E; prints a line with the sizes of the two stencils. Nothing in
  /// the library calls it.
  /// @param nx,ny,nz  direction of the face's normal, any length but 0
  /// @return size of the stencil
  int CountingVirtualNodeToCellBySearchNumber(int i, int* pair, double nx, double ny, double nz);

  // Coefficients: CZynFaceRBFInternalObject_Weights.cpp, with those of vertices and virtual nodes in
  // ..._PointWeights.cpp and what nothing calls in ..._WeightAlternatives.cpp. Each operation stores the rows of face
  // i in 1..NFace, except the two that fill `out`. @return 1

  /// Methods 1 and 2: value and gradient at the target point from the stencil.
  int DeriveFaceCoefficentBysolveDQfullMatrix(int i);

  /// Method 3: value and gradient at the target point from the face's two cells and its vertices, with each vertex
  /// replaced by the cells around it. Initialize_FaceInterpolateData solves the system of each vertex once; a call by
  /// itself solves those of the face's vertices again, with the same result.
  int DeriveFaceCoefficentBysolveDQfullMatrix_20_03(int i);

  /// Method 4: derivative along the normal, (value at E - value at P) / |P - E|, and value, linear between P
  /// and E. On face types 2, 3, 4 and 6 the value at E is the ghost cell's.
  int DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(int i);

  /// Solves the system of the face's two cells and stores nothing. Nothing in the library calls it.
  int DeriveFaceCoefficentBysolveDQfullMatrix_Cell_PE(int i);

  /// P and E interpolated from the vertices of the cells tied to them, and these from the cells around them. Nothing
  /// in the library calls it.
  /// @note Compared with method 4, the derivative has the opposite sign, and the value takes the weights of the
  /// vertices without those of the cells, so the two kinds of rows cannot stand for each other.
  /// @pre rows made by CountingNodeToCellconnectionNumber from the vertices of both cells
  int DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node_30_03(int i);

  /// Weights of the value at vertex v from the cells around it; may raise `MAXerr`.
  /// @param[out] out  [1..n], n the length of the vertex's row in `ppRBFiNodeConn`
  int DeriveFacefiBysolveDQfullMatrix_03(int v, double* out);

  /// Weights of the value at virtual point k of face i (1 is P, 2 is E).
  /// @param      fromVertices  false: from the cells of row k of `m_pFaceRows[i]`; true: from the
  ///                           vertices of the cell tied to the point
  /// @param[out] out           [1..n], n the number of those
  int DeriveFacefiBysolveDQfullMatrix_Virtual03(bool fromVertices, int i, int k, double* out);

  // Application: CZynFaceRBFInternalObject_Weights.cpp

  /// value_i = sum over the stencil of face i, in its order, of phi times the weights.
  ///
  /// Allocates and exchanges nothing: `phi` is used in ghost and halo cells as it stands. Without faces, nothing is
  /// written.
  /// @param[in]  phi                [1..NCell], U; shares no memory with the others
  /// @param[out] faceValue          [1..NFace], U, overwritten
  /// @param[out] zero1,zero2,zero3  [1..NFace], set to 0.0
  /// @return 0
  int Multiply_FaceRBFCoefficent(double* phi, double* faceValue, double* zero1, double* zero2, double* zero3);

  // Report: CZynFaceRBFInternalObject_Report.cpp

  /// Prints how well the rows reproduce the field 1, whose value is 1 and whose slope is 0. It turns the sums of
  /// squares into root mean squares, so call it once.
  /// @note Methods 1 and 2 do not count their faces, so their root mean squares are quotients by 0. Coordinates are
  /// printed ten times as large as they are. A reader of the report has to know both.
  /// @return 0
  int PrintDebugMessage();

  int** m_ppFaceCellConn = nullptr;      ///< [1..NFace] stencil: row of cells
  IBCnode** m_ppFaceGradCoef = nullptr;  ///< [1..NFace] coefficients of d/dx, d/dy, d/dz, 1/L; methods 1 to 3
  double** m_ppFaceDnCoef = nullptr;     ///< [1..NFace] of the derivative along the normal, 1/L; methods 3, 4
  double** m_ppFaceFiCoef = nullptr;     ///< [1..NFace] of the value
  Cpp_DataStructure* m_pFaceRows = nullptr;  ///< [1..NFace] rows of positions: per vertex, or for P and E
  int** ppRBFiNodeConn = nullptr;            ///< [1..NNode] cells around a vertex
  int** m_ppRBFlnods = nullptr;              ///< [1..NCell] vertices of a cell, room for `MaxLnods`
  int** m_ppRBFCell33Conn = nullptr;         ///< [1..NCell] neighbours of a cell
  int** m_ppRBFCell32Conn = nullptr;         ///< [1..NCell] faces of a cell
  int** m_ppRBFCell32Type = nullptr;         ///< [1..NCell] their types
  int iSearch_method = 4;                    ///< 1 to 4, see above
  bool bDebug = false;                       ///< whether the report is printed
  double Search_distance = 0.0;              ///< L; not read
  int Search_number = 20;                    ///< wanted number of cells in a search
  int iFaceType = 1;
  double Xmax = 0.0, Ymax = 0.0, Zmax = 0.0, Xmin = 0.0, Ymin = 0.0, Zmin = 0.0;  ///< bounds of the mesh, L
  double MeanDistance = 0.0;  ///< between the two cells of an inner face, L; not a number without inner faces
  char RBFFileName[1024] = "";  ///< the settings file
  double Span = 1000.0;         ///< support radius over a length of the stencil
  int NFace = 0;                ///< faces of this type
  int NFaceDone = 0;            ///< faces that the report counts
  int MaxLnods = 0;             ///< most vertices of any cell or boundary face
  char ErrorMsg[1024];

  /// Sum of squared errors of the value; PrintDebugMessage makes it the root mean square.
  double fiRMS = 0.0;
  double fiMAX = 0.0;          ///< largest error of the value
  int fiMAXFaceID = 0;         ///< its face
  double fiMAXAnalysis = 0.0;  ///< the exact value there
  double fiMAXRBF = 0.0;       ///< the sum of the row there
  double dfidxRMS = 0.0;       ///< likewise for d/dx
  double dfidxMAX = 0.0;
  int dfidxMAXFaceID = 0;
  double dfidxMAXRBF = 0.0;
  double dfidyRMS = 0.0;  ///< likewise for d/dy
  double dfidyMAX = 0.0;
  int dfidyMAXFaceID = 0;
  double dfidyMAXRBF = 0.0;
  double dfidzRMS = 0.0;  ///< likewise for d/dz
  double dfidzMAX = 0.0;
  int dfidzMAXFaceID = 0;
  double dfidzMAXRBF = 0.0;
  double dfidnRMS = 0.0;  ///< likewise for the derivative along the normal
  double dfidnMAX = 0.0;
  int dfidnMAXFaceID = 0;
  double dfidnMAXRBF = 0.0;
  double MAXerr = 0.0;   ///< largest error of the sum of a vertex's weights
  int MAXerrNodeID = 0;  ///< its vertex

  /// [1..NCell] 1 interior, 2 wall, 3 inlet, 4 outlet, 5 partition, 6 symmetry, 0 none.
  int* m_pCellType = nullptr;
  int* m_pTreeCell = nullptr;        ///< [1..NCell] cell of an entry of `m_pCellTree`: the same number
  double* m_pFaceSupport = nullptr;  ///< [1..NFace] length that `Span` multiplies, L; methods 1 to 3
  int** m_ppFaceLnods = nullptr;     ///< [1..NFace] vertices of a face; method 3
  /// [1..NCell] positions while a stencil is collected: in the stencil, in that of P, in that of E. All zero
  /// between faces.
  int *m_pMarkAll = nullptr, *m_pMarkP = nullptr, *m_pMarkE = nullptr;
  CZYNVector<bool, 1> m_BoundaryNode;     ///< [1..NNode] whether a vertex is one of a face that is not inner
  CZYNOptKer* m_pCellTree = nullptr;      ///< points of all cells
  CZYNOptKer* m_pBoundaryTree = nullptr;  ///< boxes of the boundary faces; not searched
  /// [0..NFace] P at 1 and E at 2, element 0 unused; the tag is the cell tied to the point.
  IBCnode** m_ppVirtualNode = nullptr;
  CZYNVector<double, 1> m_FaceX, m_FaceY, m_FaceZ;  ///< [1..NFace] target point, L
  CZyn3dGV* pGV = nullptr;
  CZYN3DFiniteVolumeMesh* pMesh = nullptr;
  CPartitionFace_DLL* pPartFace = nullptr;
  CCommunication* pCommunication = nullptr;  ///< not used
  CZYNGVGPU* pGVGPU = nullptr;               ///< not used
  CZYNGVOpenMP* pGVOpenMP = nullptr;         ///< not used
  std::uint64_t GPUFirstWord = 0;            ///< first word of the accelerator object; nothing reads it
  IBCnode* m_pNodeTable = nullptr;           ///< [1..NCell] the point of a cell number, which is the tag, L
  CZYNKNCMPCompParm* pKNCMP = nullptr;       ///< settings; null: they come from the file

 private:
  struct Work;
  class WorkTables;

  /// Owns the work memory of the set-up. A copy of the object begins without any.
  class WorkOwner {
   public:
    WorkOwner();
    WorkOwner(WorkOwner const&);
    WorkOwner& operator=(WorkOwner const&);
    ~WorkOwner();
    Work& Get();  ///< made at the first use
    void Release();

   private:
    std::unique_ptr<Work> work_;
  };

  /// An operation that derives the weights of a face; null to leave it at the stencil.
  using DeriveFace = int (CZynFaceRBFInternalObject::*)(int i);

  // Lifecycle and settings
  void AllocateTables();
  void MakeMissingTables();
  void SetUpAllFaces();

  // Points and trees
  FaceKind Kind() const;
  FaceGroup OwnFaces() const;
  void MeasureMesh();
  void SetInnerTargets();
  void CollateFaces(FaceKind kind);
  void SetTarget(int f, double x, double y, double z);
  DQVector Target(int i) const;
  DQVector PointOf(int c) const;
  DQVector VertexPoint(int v) const;
  GrowingBoxSearch CellSearch();
  void MeasureFound(int const* ids, int count, DQVector const& from);

  // Stencils
  bool MayHaveTwins(int n, int const* cells);
  void ForEachFaceByNode(DeriveFace derive);
  void ForEachFaceByTopology(bool alsoDerives);
  int CollectAroundFace(int i, int const* pair, int const* vertices);
  std::size_t NumberCells(int const* row, int* list, int size, int* positions);
  void StoreFoundStencil(int i, int n, double support);
  double FaceLength(int i, int const* pair, int const* vertices);
  void StartMerged(int const* pair);
  static void AppendOnce(int c, std::vector<int>& list, int* marks);
  template <typename LengthOf>
  int** MakePositionRows(int i, int nRow, LengthOf lengthOf);
  void ForgetPositionRows(int i);
  int StoreStencil(int i);
  void MakeValueRows(int i, int n);
  void MakeGradientRow(int i, int n);
  static void ClearMarks(std::vector<int> const& list, int* marks);

  // Virtual nodes
  void ForEachFaceByVirtualNodes(DeriveFace derive);
  void StartSides(int const* pair);
  void AppendToSide(int c, std::vector<int>& side, int* marks);
  void CollectNeighbours(int c, std::vector<int>& side, int* marks);
  void CollectAroundVertices(int c, std::vector<int>& side, int* marks);
  void CollectCube(IBCnode const& around, double halfWidth, std::vector<int>& side, int* marks);
  bool DropTwins(std::vector<int>& list, int* marks);
  void StoreSides(int i);
  void ClearAllMarks();
  double NearestPlane(int c, int skippedType, int skippedFace, DQVector const& from, DQVector const& along);

  // Coefficients
  double* SumsOf(int n);
  void AddFaceByVertices(int i, double* w);
  void DeriveNewFaceByVertices(int i);
  double const* VertexWeights(int v);
  double* WeightsOf(int n);
  void TakeVerticesOf(int c, KernelSystem& system) const;
  void AddFromCells(int i, int k, double normalFactor, double valueFactor);
  int AddFromVertices(int i, int k, int firstRow, double normalFactor, double valueFactor);
  void AddToCellBeyond(int i, double normalCoefficient);

  // Report
  void ClearReport();
  void AddGradientErrors(double sum, DQVector const& gradientSum, int i);
  void AccumulateNormalReport(int i);
  void AddValueError(double sum, int i);
  void PrintValueReport();
  void PrintNormalReport();
  void PrintGradientReport();
  void PrintTarget(char const* format, int i);
  void PrintVirtualNode(char const* format, int i, int k);

  WorkOwner work_;
};
