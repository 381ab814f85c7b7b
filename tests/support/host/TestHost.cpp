#include "tests/support/host/TestHost.h"

namespace gradient_test {

GuardedArray<double> Guarded(std::vector<double> const& values) {
  int const n = static_cast<int>(values.size()) - 1;
  GuardedArray<double> array(n);
  for (int i = 1; i <= n; ++i) array[i] = values[static_cast<std::size_t>(i)];
  return array;
}

namespace {

GuardedArray<double> CentreComponent(MeshDescription const& mesh, double Vector3::*component) {
  std::vector<double> values;
  for (Vector3 const& centre : mesh.centres) values.push_back(centre.*component);
  return Guarded(values);
}

}  // namespace

TestHost::TestHost(MeshDescription const& description, Exchange const& exchange, bool lendEmptyArrays)
    : partitionFaces(description.partition),
      communication(description.NCell(), exchange),
      previous(description.NCell(), 1e9),
      xc(CentreComponent(description, &Vector3::x)),
      yc(CentreComponent(description, &Vector3::y)),
      zc(CentreComponent(description, &Vector3::z)),
      volume(Guarded(description.volumes)),
      inner(description.inner),
      inlet(description.inlet),
      outlet(description.outlet),
      symmetry(description.symmetry),
      wall(description.wall),
      description_(description) {
  for (GuardedFaces* faces : {&inner, &inlet, &outlet, &symmetry, &wall, &partitionFaces.Faces()})
    faces->lendEmptyArrays = lendEmptyArrays;
  LendCells();
  LendInnerFaces();
  LendInletAndOutlet();
  LendSymmetryAndWall();
}

void TestHost::LendCells() {
  mesh.NCell = description_.NCell();
  mesh.NInnerCells = description_.nInnerCells;
  mesh.xc = xc.Data();
  mesh.yc = yc.Data();
  mesh.zc = zc.Data();
  mesh.Volume = volume.Data();
  gv.PrevGradX = previous.x.Data();
  gv.PrevGradY = previous.y.Data();
  gv.PrevGradZ = previous.z.Data();
}

void TestHost::LendInnerFaces() {
  mesh.NInnerFaces = inner.count;
  mesh.ijCV = inner.Lend(inner.cv);
  mesh.ij = inner.Lend(inner.other);
  mesh.ijSx = inner.Lend(inner.sx);
  mesh.ijSy = inner.Lend(inner.sy);
  mesh.ijSz = inner.Lend(inner.sz);
  mesh.ijxc = inner.Lend(inner.xc);
  mesh.ijyc = inner.Lend(inner.yc);
  mesh.ijzc = inner.Lend(inner.zc);
  mesh.Lamda = inner.Lend(inner.weight);
  mesh.FaceType = inner.Lend(inner.type);
}

void TestHost::LendInletAndOutlet() {
  mesh.NInlet = inlet.count;
  mesh.ijInletCV = inlet.Lend(inlet.cv);
  mesh.ijInlet = inlet.Lend(inlet.other);
  mesh.ijInletSx = inlet.Lend(inlet.sx);
  mesh.ijInletSy = inlet.Lend(inlet.sy);
  mesh.ijInletSz = inlet.Lend(inlet.sz);
  mesh.NOutlet = outlet.count;
  mesh.ijOutletCV = outlet.Lend(outlet.cv);
  mesh.ijOutlet = outlet.Lend(outlet.other);
  mesh.ijOutletSx = outlet.Lend(outlet.sx);
  mesh.ijOutletSy = outlet.Lend(outlet.sy);
  mesh.ijOutletSz = outlet.Lend(outlet.sz);
}

void TestHost::LendSymmetryAndWall() {
  mesh.NSymmetry = symmetry.count;
  mesh.ijSymmetryCV = symmetry.Lend(symmetry.cv);
  mesh.ijSymmetry = symmetry.Lend(symmetry.other);
  mesh.ijSymmetrySx = symmetry.Lend(symmetry.sx);
  mesh.ijSymmetrySy = symmetry.Lend(symmetry.sy);
  mesh.ijSymmetrySz = symmetry.Lend(symmetry.sz);
  mesh.NWall = wall.count;
  mesh.ijWallCV = wall.Lend(wall.cv);
  mesh.ijWall = wall.Lend(wall.other);
  mesh.ijWallSx = wall.Lend(wall.sx);
  mesh.ijWallSy = wall.Lend(wall.sy);
  mesh.ijWallSz = wall.Lend(wall.sz);
}

void TestHost::ConnectTo(COperatorGradient& gradient) {
  gradient.getZyn3dGV(&gv, nullptr, nullptr, &mesh);
  gradient.getPartitionFace(&partitionFaces);
  gradient.getCommunication(&communication, &com);
}

bool TestHost::InputsUntouched() const {
  TestHost const fresh(description_);
  return xc.IdenticalTo(fresh.xc) && yc.IdenticalTo(fresh.yc) && zc.IdenticalTo(fresh.zc) &&
         volume.IdenticalTo(fresh.volume) && inner.IdenticalTo(fresh.inner) &&
         inlet.IdenticalTo(fresh.inlet) && outlet.IdenticalTo(fresh.outlet) &&
         symmetry.IdenticalTo(fresh.symmetry) && wall.IdenticalTo(fresh.wall) &&
         partitionFaces.Faces().IdenticalTo(fresh.partitionFaces.Faces());
}

}  // namespace gradient_test
