#pragma once

#include "foundation/FaceGroups.h"
#include "gradient/FaceWalk.h"
#include "gradient/TwoFaces.h"

/// @file
/// Walks over the faces of a group as pairs of cells that add three products of a pair to sums of cells. The products of two
/// pairs are worked out side by side and added one after the other, by ascending number of the face.

namespace face_walk {

/// Sums of cells along x, y and z, [1..NCell] each.
struct VectorSums {
  double *x, *y, *z;
};

template <bool ToBoth, class PairProduct>
[[gnu::always_inline]] inline void AddPairProducts(FaceGroup const& group, PairProduct const& pairProduct,
                                                   VectorSums const& sums) {
  auto const add = [=](double x, double y, double z, int cv, int other) {
    sums.x[cv] += x, sums.y[cv] += y, sums.z[cv] += z;
    if constexpr (ToBoth) sums.x[other] += x, sums.y[other] += y, sums.z[other] += z;
  };
  int f = 1;
  for (; f < group.count; f += 2) {
    TwoFaces const faces{group, f, {group.cv[f], group.cv[f + 1]}, {group.other[f], group.other[f + 1]}};
    auto const product = pairProduct(faces);
    add(product.x[0], product.y[0], product.z[0], faces.cv.first, faces.other.first);
    add(product.x[1], product.y[1], product.z[1], faces.cv.second, faces.other.second);
  }
  for (; f <= group.count; ++f) {
    OneFace const face{group, f, group.cv[f], group.other[f]};
    auto const product = pairProduct(face);
    add(product.x, product.y, product.z, face.cv, face.other);
  }
}

/// Adds the products to the sums of both cells.
/// @param pairProduct  gives them as x, y, z: `pairProduct(face)` reads the cells like FaceAt, one pair or two side by
///                     side
template <class PairProduct>
void AddToBoth(FaceGroup const& group, PairProduct const& pairProduct, VectorSums const& sums) {
  AddPairProducts<true>(group, pairProduct, sums);
}

/// Adds the products to the sums of `cv` alone.
template <class PairProduct>
void AddToCv(FaceGroup const& group, PairProduct const& pairProduct, VectorSums const& sums) {
  AddPairProducts<false>(group, pairProduct, sums);
}

}  // namespace face_walk
