#include "sampling/Sample.h"

#include "OFstream.H"
#include "OSspecific.H"
#include "Time.H"
#include "addToRunTimeSelectionTable.H"
#include "volFields.H"
#include "writer.H"

namespace Foam {
namespace zyn {

defineTypeNameAndDebug(Sample, 0);
addToRunTimeSelectionTable(functionObject, Sample, dictionary);

Sample::Sample(word const& name, Time const& time, dictionary const& dict)
    : functionObjects::fvMeshFunctionObject(name, time, dict) {
  read(dict);
}

bool Sample::read(dictionary const& dict) {
  fvMeshFunctionObject::read(dict);
  stamp_.reset();
  dict.readEntry("fields", fields_);
  withGradients_ = dict.lookupOrDefault<Switch>("gradients", false);
  boundary_ = dict.lookupOrDefault<Switch>("boundary", true) ? PointSampler::Boundary::kUsed
                                                             : PointSampler::Boundary::kIgnored;
  ReadInterpolation(dict);
  points_.clear();
  faces_.clear();
  if (!dict.found("points") && !dict.found("faces")) {
    FatalIOErrorInFunction(dict) << "Neither points nor faces are given" << exit(FatalIOError);
  }
  if (dict.found("points")) ReadPoints(dict);
  if (dict.found("faces")) ReadFaces(dict);
  return true;
}

void Sample::ReadInterpolation(dictionary const& dict) {
  constexpr int kPointMethods = 3, kFaceMethods = 4;
  pointSettings_ = faceSettings_ = RadialBasisSettings::Defaults();
  pointSettings_.Read(DictionaryIn(dict, "pointInterpolation"), kPointMethods);
  faceSettings_.Read(DictionaryIn(dict, "faceInterpolation"), kFaceMethods);
}

void Sample::ReadPoints(dictionary const& dict) {
  setFormat_ = dict.lookupOrDefault<word>("setFormat", "raw");
  if (!writer<scalar>::wordConstructorTablePtr_->found(setFormat_)) {
    FatalIOErrorInFunction(dict) << "Unknown setFormat " << setFormat_ << "; possible are "
                                 << flatOutput(writer<scalar>::wordConstructorTablePtr_->sortedToc())
                                 << exit(FatalIOError);
  }
  dictionary const sets = DictionaryIn(dict, "points");
  for (word const& name : sets.toc()) points_.emplace_back(name, DictionaryIn(sets, name), time_);
}

void Sample::ReadFaces(dictionary const& dict) {
  word const format = dict.lookupOrDefault<word>("surfaceFormat", "vtk");
  if (!surfaceWriter::supportedType(format)) {
    FatalIOErrorInFunction(dict) << "Unknown surfaceFormat " << format << exit(FatalIOError);
  }
  dictionary const options = DictionaryIn(DictionaryIn(dict, "formatOptions"), format);
  dictionary const sets = DictionaryIn(dict, "faces");
  for (word const& name : sets.toc())
    faces_.emplace_back(name, DictionaryIn(sets, name), surfaceWriter::New(format, options));
}

void Sample::SetUp() {
  if (!stamp_.expired()) return;
  samplingMesh_ = std::make_unique<SamplingMesh>(mesh_);
  for (PointSet& set : points_) set.SetUp(*samplingMesh_, pointSettings_, boundary_);
  for (FaceSet& set : faces_) set.SetUp(*samplingMesh_, faceSettings_);
  stamp_ = MeshStamp::Of(mesh_);
}

bool Sample::write() {
  SetUp();
  WarnOfMissingFields();
  label const nFields =
      mesh_.sortedNames<volScalarField>(fields_).size() + mesh_.sortedNames<volVectorField>(fields_).size();
  for (FaceSet& set : faces_) {
    set.writer().open(OutputFolder() / set.name());
    set.writer().beginTime(time_);
    set.writer().nFields() = nFields;
  }
  SampleFields<scalar>();
  SampleFields<vector>();
  for (FaceSet& set : faces_) {
    set.writer().endTime();
    set.writer().close();
  }
  Log << type() << ' ' << name() << " write: " << OutputFolder() / time_.timeName() << nl << endl;
  return true;
}

void Sample::WarnOfMissingFields() const {
  for (wordRe const& field : fields_) {
    if (!mesh_.sortedNames<volScalarField>(field).empty() ||
        !mesh_.sortedNames<volVectorField>(field).empty())
      continue;
    WarningInFunction << "There is no scalar or vector field of cells " << field << " to sample at time "
                      << time_.timeName() << endl;
  }
}

template <class Type>
void Sample::SampleFields() {
  using VolField = GeometricField<Type, fvPatchField, volMesh>;
  using Gradient = typename outerProduct<vector, Type>::type;
  for (word const& fieldName : mesh_.sortedNames<VolField>(fields_)) {
    samplingMesh_->Fill(mesh_.lookupObject<VolField>(fieldName));
    for (PointSet& set : points_) {
      Field<Gradient> gradients;
      Field<Type> const values = set.Sample<Type>(withGradients_ ? &gradients : nullptr);
      if (!Pstream::master()) continue;
      coordSet const coordinates = set.Coordinates();
      WriteTable(coordinates, fieldName, values);
      if (withGradients_) WriteTable(coordinates, "grad(" + fieldName + ")", gradients);
    }
    for (FaceSet& set : faces_)
      if (set.size() > 0) set.writer().write(fieldName, set.Sample<Type>());
  }
}

template <class Type>
void Sample::WriteTable(coordSet const& points, word const& fieldName, Field<Type> const& values) const {
  wordList const names(1, fieldName);
  autoPtr<writer<Type>> const format = writer<Type>::New(setFormat_);
  fileName const folder = OutputFolder() / time_.timeName();
  mkDir(folder);
  OFstream file(folder / format->getFileName(points, names));
  format->write(points, names, List<Field<Type> const*>(1, &values), file);
}

fileName Sample::OutputFolder() const {
  fileName const folder = time_.globalPath() / outputPrefix / name();
  return mesh_.name() == polyMesh::defaultRegion ? folder : folder / mesh_.name();
}

}  // namespace zyn
}  // namespace Foam
