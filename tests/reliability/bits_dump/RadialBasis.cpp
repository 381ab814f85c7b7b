#include <stdlib.h>

#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/ZYNKNCompParm.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/reliability/bits_dump/Bits.h"
#include "tests/reliability/bits_dump/Meshes.h"

// The parts of a mesh are set up one after the other here: set-up asks nothing of the other parts.

namespace bits_dump {
namespace {

using Field = std::vector<double>;

Field Zeros(int n) { return Field(static_cast<std::size_t>(n) + 1, 0.0); }

void ForAllParts(void (*write)(BitsFile&, HostPartition&, std::string const&), BitsFile& file) {
  ForAllMeshes([&](NamedCutMesh& mesh) {
    for (int p = 0; p < mesh.NParts(); ++p) write(file, mesh.Part(p), mesh.Name(p));
  });
}

/// A folder for the settings file of one operator.
class SettingsFolder {
 public:
  SettingsFolder() {
    if (mkdtemp(path_) == nullptr) throw std::runtime_error("no folder for settings");
  }
  ~SettingsFolder() {
    std::remove((Base() + ".rbf").c_str());
    std::remove(path_);
  }
  SettingsFolder(SettingsFolder const&) = delete;
  SettingsFolder& operator=(SettingsFolder const&) = delete;

  std::string Base() const { return std::string(path_) + "/run"; }

 private:
  char path_[32] = "/tmp/bits_dump_XXXXXX";
};

/// The solver's parameters, lent to the face and the point operator.
class Parameters : public CZYNKNCMPCompParm {
 public:
  Parameters(int method, int span, int number) {
    face = {0, span, method, 0.0, number, 0};
    points = {0, span, method, 0.0, number};
  }
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &face; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points; }

  CZYNCMP_FaceRBF_Parm face;
  CZYNCMP_IBRBF_Parm points;
};

void WriteRow(BitsFile& file, std::string const& row, int n, double const* weights) {
  file.WriteTogether(row.c_str(), n, [=](int k) { return weights[k]; });
}

/// weights[1..n] with x, y and z
template <class Node>
void WriteRow(BitsFile& file, std::string const& row, int n, Node const* weights) {
  file.WriteTogether((row + " x").c_str(), n, [=](int k) { return weights[k].x; });
  file.WriteTogether((row + " y").c_str(), n, [=](int k) { return weights[k].y; });
  file.WriteTogether((row + " z").c_str(), n, [=](int k) { return weights[k].z; });
}

// ------------------------------------------------------------------------------------------------------- cells

/// The cell operator destroys its host objects, which are borrowed here.
class CellOperator {
 public:
  CellOperator(HostPartition& own, double span, int shapeNormalize) {
    SettingsFolder folder;
    own.SetBaseFileName(folder.Base() + ".cas");
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.InitialRBFSetting();
    op.Span = span;
    op.iShape_Normalize = shapeNormalize;
    op.DeriveRBFweighting();
  }
  ~CellOperator() {
    op.m_pGV = nullptr;
    op.m_pPartFace = nullptr;
  }
  CellOperator(CellOperator const&) = delete;
  CellOperator& operator=(CellOperator const&) = delete;

  CZynRBFInternalObject op;
};

void WriteCellOperatorOnPart(BitsFile& file, HostPartition& own, std::string const& name) {
  for (double const span : {500.0, 5.0}) {
    for (int const shapeNormalize : {0, 1}) {
      CellOperator cells(own, span, shapeNormalize);
      Field phi = SmoothField(own), gx = phi, gy = phi, gz = phi;
      cells.op.MultiplyRBFCoefficent(phi.data(), gx.data(), gy.data(), gz.data());
      file.BeginCase(name + ", cell operator, span " + std::to_string(span) + ", form " +
                     std::to_string(shapeNormalize));
      file.Write("gx", own.mesh()->NCell, gx.data());
      file.Write("gy", own.mesh()->NCell, gy.data());
      file.Write("gz", own.mesh()->NCell, gz.data());
      file.Write("support", own.mesh()->NInnerCells, cells.op.m_pSupportLength);
      // The multiplier stands beside the weights.
      for (int c = 1; c <= own.mesh()->NInnerCells; ++c)
        WriteRow(file, "weights of cell " + std::to_string(c), cells.op.m_ppRBFCellConn[c][0] + 1,
                 cells.op.m_ppRBFCellCoef[c]);
    }
  }
}

// ------------------------------------------------------------------------------------------------------- faces

void WriteFaceWeights(BitsFile& file, CZynFaceRBFInternalObject& op) {
  for (int i = 1; i <= op.NFace; ++i) {
    std::string const row = "weights of face " + std::to_string(i);
    int const n = op.m_ppFaceCellConn[i][0];
    WriteRow(file, row + " value", n, op.m_ppFaceFiCoef[i]);
    if (op.iSearch_method != 4) WriteRow(file, row, n, op.m_ppFaceGradCoef[i]);
    if (op.iSearch_method >= 3) WriteRow(file, row + " normal", n, op.m_ppFaceDnCoef[i]);
  }
}

void WriteFaces(BitsFile& file, HostPartition& own, int faceType, Parameters parameters) {
  CZynFaceRBFInternalObject op;
  op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
  op.getPartitionFace(own.partitionFaces());
  op.SetZYNKNCMP(&parameters);
  op.Initialize_FaceInterpolateData(faceType);
  if (op.NFace == 0) return;
  Field phi = SmoothField(own), value = Zeros(op.NFace), zero[3] = {value, value, value};
  op.Multiply_FaceRBFCoefficent(phi.data(), value.data(), zero[0].data(), zero[1].data(), zero[2].data());
  file.Write("value", op.NFace, value.data());
  WriteFaceWeights(file, op);
}

void WriteFaceOperatorOnPart(BitsFile& file, HostPartition& own, std::string const& name) {
  for (int const method : {1, 2, 3, 4}) {
    for (int const span : {1000, 5}) {
      for (int faceType = 1; faceType <= 6; ++faceType) {
        file.BeginCase(name + ", face operator, method " + std::to_string(method) + ", span " +
                       std::to_string(span) + ", face type " + std::to_string(faceType));
        WriteFaces(file, own, faceType, Parameters(method, span, method == 1 ? 6 : 20));
      }
    }
  }
}

// ------------------------------------------------------------------------------------------------------ points

/// In and around the unit cube, [1..n].
std::vector<Field> RandomPoints(int n) {
  std::mt19937_64 random(11);
  std::vector<Field> points(3, Zeros(n));
  for (Field& coordinate : points)
    for (double& x : coordinate) x = static_cast<double>(random() >> 11) * 0x1.4p-53 - 0.125;
  return points;
}

Field MarksOf(HostPartition& own, bool all) {
  Field marks = Zeros(own.mesh()->NCell);
  for (std::size_t c = 1; c < marks.size(); ++c) marks[c] = all || c % 5 == 0 ? -1.0 : 0.0;
  return marks;
}

void WritePoints(BitsFile& file, HostPartition& own, bool allUsable, Parameters parameters) {
  constexpr int kPoints = 25;
  std::vector<Field> points = RandomPoints(kPoints);
  CZynIBRBFInternalObject op;
  op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
  op.getPartitionFace(own.partitionFaces());
  op.SetZYNKNCMP(&parameters);
  op.Initialize_IBInterpolateData(MarksOf(own, allUsable).data(), kPoints, points[0].data(), points[1].data(),
                                  points[2].data());
  Field phi = SmoothField(own), value = Zeros(kPoints), x = value, y = value, z = value;
  op.Multiply_IBRBFCoefficent(phi.data(), value.data(), x.data(), y.data(), z.data());
  file.Write("value", kPoints, value.data());
  file.Write("d/dx", kPoints, x.data());
  file.Write("d/dy", kPoints, y.data());
  file.Write("d/dz", kPoints, z.data());
  for (int i = 1; i <= kPoints; ++i) {
    std::string const row = "weights of point " + std::to_string(i);
    WriteRow(file, row + " value", op.m_ppIBConn[i][0], op.m_ppIBValueCoef[i]);
    WriteRow(file, row, op.m_ppIBConn[i][0], op.m_ppIBCoef[i]);
  }
}

void WritePointOperatorOnPart(BitsFile& file, HostPartition& own, std::string const& name) {
  for (int const method : {1, 2, 3}) {
    for (int const span : {500, 5}) {
      for (bool const allUsable : {true, false}) {
        file.BeginCase(name + ", point operator, method " + std::to_string(method) + ", span " +
                       std::to_string(span) + (allUsable ? ", all cells" : ", few cells"));
        WritePoints(file, own, allUsable, Parameters(method, span, 20));
      }
    }
  }
}

}  // namespace

void WriteCellOperator(BitsFile& file) { ForAllParts(WriteCellOperatorOnPart, file); }
void WriteFaceOperator(BitsFile& file) { ForAllParts(WriteFaceOperatorOnPart, file); }
void WritePointOperator(BitsFile& file) { ForAllParts(WritePointOperatorOnPart, file); }

}  // namespace bits_dump
