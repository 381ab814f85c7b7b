#include "tests/support/host/LentFaces.h"

namespace zyn_test {
namespace {

std::vector<std::vector<int>> NodesOf(std::vector<Face> const& faces) {
  std::vector<std::vector<int>> rows(1);
  for (Face const& face : faces) rows.push_back(face.nodes);
  return rows;
}

}  // namespace

LentFaces::LentFaces(std::vector<Face> const& faces)
    : count(static_cast<int>(faces.size())),
      cv(count),
      other(count),
      type(count),
      sx(count),
      sy(count),
      sz(count),
      xc(count),
      yc(count),
      zc(count),
      weight(count),
      nodes(NodesOf(faces)) {
  int f = 0;
  for (Face const& face : faces) {
    ++f;
    cv[f] = face.cv;
    other[f] = face.other;
    type[f] = face.type;
    sx[f] = face.area.x;
    sy[f] = face.area.y;
    sz[f] = face.area.z;
    xc[f] = face.centre.x;
    yc[f] = face.centre.y;
    zc[f] = face.centre.z;
    weight[f] = face.weight;
  }
}

bool LentFaces::IdenticalTo(LentFaces const& o) const {
  return cv.IdenticalTo(o.cv) && other.IdenticalTo(o.other) && type.IdenticalTo(o.type) &&
         sx.IdenticalTo(o.sx) && sy.IdenticalTo(o.sy) && sz.IdenticalTo(o.sz) && xc.IdenticalTo(o.xc) &&
         yc.IdenticalTo(o.yc) && zc.IdenticalTo(o.zc) && weight.IdenticalTo(o.weight) &&
         nodes.Rows() == o.nodes.Rows();
}

}  // namespace zyn_test
