#pragma once

#include <string>
#include <vector>

#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "tests/support/host/OperatorHosts.h"
#include "tests/support/rbf_face/PlainFaceOperator.h"
#include "tests/support/watch/SettingsFolder.h"

namespace zyn_test {

/// A settings file with the given values, in the operator's own layout.
std::string Settings(std::string const& span, std::string const& method, std::string const& distance,
                     std::string const& number, std::string const& debug);
std::string Settings(FaceSettings const& settings, bool debug = false);

/// Puts the settings into a block of the solver's parameters, whose span is a whole number. The other values stay.
void Fill(CZYNCMP_FaceRBF_Parm& block, FaceSettings const& settings);

/// Gives an operator the host objects of any host. The operator borrows them.
void Connect(CZynFaceRBFInternalObject& object, CZyn3dGV& globals, CZYN3DFiniteVolumeMesh& mesh,
             CPartitionFace_DLL& partitionFaces);

/// The stages of the set-up called one by one, as Initialize_FaceInterpolateData calls them, so that work tables
/// can be looked at that it would release. Each stage calls those before it that are still to come.
///
/// The settings are put in place directly; the method already counts when the tables are allocated.
class Stages {
 public:
  Stages(CZynFaceRBFInternalObject& object, int faceType, FaceSettings const& settings);
  ~Stages() { object_.Release_Memory(); }
  Stages(Stages const&) = delete;
  Stages& operator=(Stages const&) = delete;

  void Allocate() { Reach(1); }
  void Collate() { Reach(2); }
  void FillTree() { Reach(3); }
  void FindStencils() { Reach(4); }
  void Derive() { Reach(5); }

  /// What the stages have printed so far.
  std::string const& PrintedSoFar() const { return printed_; }

 private:
  void Reach(int stage);
  void Run(int stage);
  int DeriveFace(int i);
  int CountFaces() const;

  CZynFaceRBFInternalObject& object_;
  FaceSettings settings_;
  int reached_ = 0;
  std::string printed_;
};

/// An operator that was given all host objects of a plan, with a folder for its settings file.
class FaceBed {
 public:
  /// Without settings there is no file before the operator writes one.
  explicit FaceBed(TestMesh const& plan) : host(plan, folder.BaseFileName()) {
    EXPECT_EQ(1, object.getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh));
    EXPECT_EQ(1, object.getPartitionFace(&host.partitionFaces));
    EXPECT_EQ(1, object.getCommunication(&host.communication));
  }
  FaceBed(TestMesh const& plan, std::string const& settings) : FaceBed(plan) { folder.Write(settings); }

  /// The whole set-up. @return what was printed
  std::string SetUp(int faceType) {
    return Printed([this, faceType] { EXPECT_EQ(0, object.Initialize_FaceInterpolateData(faceType)); });
  }

  /// The whole set-up with the settings from the parameter block. @return what was printed
  std::string SetUp(int faceType, FaceSettings const& settings) {
    UseBlock(settings);
    return SetUp(faceType);
  }

  void UseBlock(FaceSettings const& settings);

  /// The plain form on the same records.
  PlainFaceOperator Plain(int faceType, FaceSettings const& settings) {
    return PlainFaceOperator(host.mesh, host.partitionFaces, faceType, settings);
  }

  SettingsFolder folder;
  FaceHost host;
  CZynFaceRBFInternalObject object;
};

/// A stencil or another integer row with its length in element 0, without that element.
std::vector<int> RowOf(int const* row);

/// The rows of a Cpp_DataStructure, from row 1 on.
std::vector<std::vector<int>> RowsOf(Cpp_DataStructure& table);

}  // namespace zyn_test
