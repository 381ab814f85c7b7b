#include "tests/support/rbf_face/FaceBed.h"

#include <cstdio>

namespace zyn_test {

std::string Settings(std::string const& span, std::string const& method, std::string const& distance,
                     std::string const& number, std::string const& debug) {
  return "1004\nSpan              = " + span + "\niSearch_method    = " + method +
         "\nSearch_distance   = " + distance + "\nSearch_number     = " + number +
         "\nDebug mode        = " + debug + "\n";
}

std::string Settings(FaceSettings const& settings, bool debug) {
  return Settings(std::to_string(settings.span), std::to_string(settings.method), "0.5",
                  std::to_string(settings.searchNumber), debug ? "1" : "0");
}

void Fill(CZYNCMP_FaceRBF_Parm& block, FaceSettings const& settings) {
  block.Span = static_cast<int>(settings.span);
  block.iSearch_method = settings.method;
  block.Search_number = settings.searchNumber;
}

void Connect(CZynFaceRBFInternalObject& object, CZyn3dGV& globals, CZYN3DFiniteVolumeMesh& mesh,
             CPartitionFace_DLL& partitionFaces) {
  EXPECT_EQ(1, object.getZyn3dGV(&globals, nullptr, nullptr, &mesh));
  EXPECT_EQ(1, object.getPartitionFace(&partitionFaces));
}

void FaceBed::UseBlock(FaceSettings const& settings) {
  Fill(host.parameters.block, settings);
  EXPECT_EQ(1, object.SetZYNKNCMP(&host.parameters));
}

Stages::Stages(CZynFaceRBFInternalObject& object, int faceType, FaceSettings const& settings)
    : object_(object), settings_(settings) {
  object_.iFaceType = faceType;
  object_.NFace = CountFaces();
  object_.iSearch_method = settings.method;
  object_.Span = settings.span;
  object_.Search_number = settings.searchNumber;
}

int Stages::CountFaces() const {
  CZYN3DFiniteVolumeMesh const& mesh = *object_.pMesh;
  int const counts[] = {0,
                        mesh.NInnerFaces,
                        mesh.NWall,
                        mesh.NInlet,
                        mesh.NOutlet,
                        object_.pPartFace->NParInterFace(),
                        mesh.NSymmetry};
  return counts[object_.iFaceType];
}

void Stages::Reach(int stage) {
  while (reached_ < stage) printed_ += Printed([this] { Run(++reached_); });
}

void Stages::Run(int stage) {
  switch (stage) {
    case 1:
      EXPECT_EQ(0, object_.Initialize_Face_memory_allocate());
      break;
    case 2:
      EXPECT_EQ(1, object_.SetFaceNodeCollation());
      break;
    case 3:
      EXPECT_EQ(0, object_.SetFaceADTress());
      break;
    case 4:
      EXPECT_EQ(0, object_.SearchFaceADTress());
      break;
    default:
      for (int i = 1; i <= object_.NFace; ++i) EXPECT_EQ(1, DeriveFace(i));
  }
}

int Stages::DeriveFace(int i) {
  switch (settings_.method) {
    case 1:
    case 2:
      return object_.DeriveFaceCoefficentBysolveDQfullMatrix(i);
    case 3:
      return object_.DeriveFaceCoefficentBysolveDQfullMatrix_20_03(i);
    default:
      return object_.DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(i);
  }
}

std::vector<int> RowOf(int const* row) { return std::vector<int>(row + 1, row + 1 + row[0]); }

std::vector<std::vector<int>> RowsOf(Cpp_DataStructure& table) {
  std::vector<std::vector<int>> rows;
  for (int row = 1; row <= table.m_iNRow; ++row) {
    rows.emplace_back();
    for (int k = 1; k <= table.GetValue(row, 0); ++k) rows.back().push_back(table.GetValue(row, k));
  }
  return rows;
}

}  // namespace zyn_test
