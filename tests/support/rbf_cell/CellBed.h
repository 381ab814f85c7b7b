#pragma once

#include <string>

#include "rbf_cell/CZynRBFInternalObject.h"
#include "tests/support/host/OperatorHosts.h"
#include "tests/support/watch/SettingsFolder.h"

namespace zyn_test {

/// A settings file with the given values, in the operator's own layout.
inline std::string Settings(std::string const& span, std::string const& shapeNormalize) {
  return "1001\nSpan              = " + span + "\nShape Normalize   = " + shapeNormalize + "\n";
}

/// The settings file as the operator writes it.
inline std::string DefaultSettings() { return Settings("500", "0"); }

/// An operator that was given all host objects of a mesh, with a folder for its settings file. The operator
/// destroys the five host objects at the end.
class CellBed {
 public:
  /// Without settings there is no file before the operator writes one.
  explicit CellBed(TestMesh const& mesh) : host(mesh, folder.BaseFileName()), object(NewConnected(host)) {}
  CellBed(TestMesh const& mesh, std::string const& settings) : CellBed(mesh) { folder.Write(settings); }
  ~CellBed() { delete object; }
  CellBed(CellBed const&) = delete;
  CellBed& operator=(CellBed const&) = delete;

  /// Set-up without weights. @return what was printed
  std::string SetUp() {
    return Printed([this] { EXPECT_EQ(1, object->InitialRBFSetting()); });
  }

  /// Set-up with weights. @return what the second stage printed
  std::string SetUpAndDerive() {
    SetUp();
    return Printed([this] { EXPECT_EQ(1, object->DeriveRBFweighting()); });
  }

  /// Reads the settings file alone. @return what was printed
  std::string ReadSettings() {
    object->ChangeFileName(object->m_szRBFFileName, ".rbf", object->m_pGV->BaseFileName);
    return Printed([this] { EXPECT_EQ(0, object->ReadRBFbackdoorfile()); });
  }

  /// A new operator with all host objects of `host`.
  static CZynRBFInternalObject* NewConnected(CellHost& host) {
    auto* const object = new CZynRBFInternalObject;
    Connect(*object, host);
    return object;
  }

  static void Connect(CZynRBFInternalObject& object, CellHost& host) {
    EXPECT_EQ(1, object.getZyn3dGV(host.NewGlobals(), host.NewGPU(), host.NewOpenMP(), &host.mesh));
    EXPECT_EQ(1, object.getPartitionFace(host.NewPartitionFaces()));
    EXPECT_EQ(1, object.getCommunication(host.NewCommunication()));
  }

  SettingsFolder folder;
  CellHost host;
  CZynRBFInternalObject* const object;
};

}  // namespace zyn_test
