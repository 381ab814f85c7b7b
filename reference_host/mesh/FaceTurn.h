#pragma once

#include <algorithm>

#include "reference_host/mesh/Vector3.h"

namespace reference_host {

constexpr int kNoTurn = -1;

/// How two faces lie on each other that go around in opposite directions, as the two sides of a cut do: node i
/// of one lies on node (turn - i) mod n of the other. Usually both begin at the same node, and the turn is 0.
/// @param[in] n         number of nodes of either face
/// @param[in] a,b       a(i), b(i): the place of node i, 0..n-1
/// @param[in] distance  how far apart two nodes that match may be, L
/// @return kNoTurn if the faces do not lie on each other
template <class PlaceA, class PlaceB>
int FindTurn(int n, PlaceA const& a, PlaceB const& b, double distance) {
  // A turn ends at the first node that does not match, usually at once. Only a face with nearly all of its
  // nodes at one point could take n * n comparisons.
  long long nLeft = 64LL * n;
  for (int turn = 0; turn < n && nLeft > 0; ++turn) {
    bool fits = true;
    for (int i = 0; i < n && fits; ++i) {
      if (nLeft > 0) --nLeft;
      fits = Length(Difference(b((turn + n - i) % n), a(i))) <= distance;
    }
    if (fits) return turn;
  }
  return kNoTurn;
}

/// The largest distance of a face's nodes from its first one, L.
/// @param[in] a  a(i): the place of node i, 0..n-1
template <class Place>
double SizeOfFace(int n, Place const& a) {
  double size = 0.0;
  for (int i = 1; i < n; ++i) size = std::max(size, Length(Difference(a(i), a(0))));
  return size;
}

}  // namespace reference_host
