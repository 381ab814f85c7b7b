#pragma once

#include <memory>
#include <vector>

#include "fvMeshFunctionObject.H"
#include "sampling/FaceSet.h"
#include "sampling/MeshStamp.h"
#include "sampling/PointSet.h"
#include "sampling/RadialBasisSettings.h"
#include "sampling/SamplingMesh.h"
#include "wordRes.H"

namespace Foam {
namespace zyn {

/// Function object `zynSample`: values of scalar and vector fields at points and faces by radial-basis interpolation.
///
///   sample
///   {
///       type    zynSample;
///       libs    ("libzynSampling.so");
///       writeControl  writeTime;
///
///       fields  (p U);
///       points
///       {
///           axis    { start (0 0 0); end (1 0 0); nPoints 101; axis distance; }
///           probes  { points ((0.1 0.2 0) (0.3 0.2 0)); }
///           body    { surface "body.stl"; }
///       }
///       faces
///       {
///           walls   { patches ("wall.*"); }
///           baffle  { faceZones (baffle); }
///           between { internal yes; }
///       }
///       // Optional, with their defaults:
///       pointInterpolation { method 2; span 200; number 20; }
///       faceInterpolation  { method 2; span 200; number 20; }
///       gradients     no;        // of the fields, at points
///       boundary      yes;       // values at points take those of patches into account
///       setFormat     raw;       // of points: raw, csv, vtk, ...
///       surfaceFormat vtk;       // of faces: vtk, raw, ensight, ...
///       formatOptions { vtk { format ascii; } }
///   }
///
/// Points are written to postProcessing/NAME/TIME/SET_FIELD.xy, faces to postProcessing/NAME/TIME/SET.vtp.
class Sample : public functionObjects::fvMeshFunctionObject {
 public:
  TypeName("zynSample");

  Sample(word const& name, Time const& time, dictionary const& dict);

  bool read(dictionary const& dict) override;
  bool execute() override { return true; }
  bool write() override;

 private:
  void ReadPoints(dictionary const& dict);
  void ReadFaces(dictionary const& dict);
  void ReadInterpolation(dictionary const& dict);
  /// Collective. Does nothing while the mesh is what it was.
  void SetUp();

  void WarnOfMissingFields() const;
  template <class Type>
  void SampleFields();
  template <class Type>
  void WriteTable(coordSet const& points, word const& fieldName, Field<Type> const& values) const;
  fileName OutputFolder() const;  ///< without the time

  wordRes fields_;
  bool withGradients_ = false;
  PointSampler::Boundary boundary_ = PointSampler::Boundary::kUsed;
  RadialBasisSettings pointSettings_, faceSettings_;
  word setFormat_;

  MeshStamp::Stamp stamp_;
  std::unique_ptr<SamplingMesh> samplingMesh_;
  std::vector<PointSet> points_;
  std::vector<FaceSet> faces_;
};

}  // namespace zyn
}  // namespace Foam
