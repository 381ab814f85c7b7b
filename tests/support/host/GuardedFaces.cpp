#include "tests/support/host/GuardedFaces.h"

namespace gradient_test {

GuardedFaces::GuardedFaces(std::vector<Face> const& faces)
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
      weight(count) {
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

bool GuardedFaces::IdenticalTo(GuardedFaces const& o) const {
  return cv.IdenticalTo(o.cv) && other.IdenticalTo(o.other) && type.IdenticalTo(o.type) &&
         sx.IdenticalTo(o.sx) && sy.IdenticalTo(o.sy) && sz.IdenticalTo(o.sz) && xc.IdenticalTo(o.xc) &&
         yc.IdenticalTo(o.yc) && zc.IdenticalTo(o.zc) && weight.IdenticalTo(o.weight);
}

}  // namespace gradient_test
