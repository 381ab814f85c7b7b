#pragma once

#include <algorithm>
#include <new>

#include "foundation/DQVector.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/IBCnode.h"

/// @file
/// Rows of weights: a row of nodes for the gradient and a row of numbers for the value, elements 1..n, made of and read
/// into numbers that lie side by side, w[0..n-1][0..3] = d/dx, d/dy, d/dz, value. Members of IBCnode are written here,
/// where that can be inlined, since it happens for every member of every stencil.

constexpr int kWeightColumns = 4;

/// The sums of the weights of a stencil, added up from the first member on.
struct WeightSums {
  DQVector gradient = {0.0, 0.0, 0.0};
  double value = 0.0;

  void Add(double const* w) {
    gradient.x += w[0];
    gradient.y += w[1];
    gradient.z += w[2];
    value += w[3];
  }
};

/// Reads rows into w.
inline void LoadWeights(IBCnode const* gradient, double const* value, int n, double* w) {
  for (int k = 1; k <= n; ++k, w += kWeightColumns) {
    w[0] = gradient[k].x;
    w[1] = gradient[k].y;
    w[2] = gradient[k].z;
    w[3] = value[k];
  }
}

/// Writes w into rows. The tags stay.
inline WeightSums StoreWeights(double const* w, int n, IBCnode* gradient, double* value) {
  WeightSums sums;
  for (int k = 1; k <= n; ++k, w += kWeightColumns) {
    gradient[k].x = w[0];
    gradient[k].y = w[1];
    gradient[k].z = w[2];
    value[k] = w[3];
    sums.Add(w);
  }
  return sums;
}

/// Makes row i of both tables of w. Their memory is written here for the first time, and once.
inline WeightSums MakeWeightRows(double const* w, int n, int tag, IBCnode** gradients, double** values,
                                 int i) {
  IBCnode* const gradient = GrowingRowTable<IBCnode>::MakeRawRow(gradients, i, n);
  double* const value = GrowingRowTable<double>::MakeRawRow(values, i, n);
  new (gradient) IBCnode;
  value[0] = 0.0;
  WeightSums sums;
  for (int k = 1; k <= n; ++k, w += kWeightColumns) {
    double const x = w[0], y = w[1],
                 z = w[2];  // read before the zeros of the new node, which are then not written
    IBCnode* const node = new (gradient + k) IBCnode;
    node->x = x;
    node->y = y;
    node->z = z;
    node->tag = tag;
    value[k] = w[3];
    sums.Add(w);
  }
  return sums;
}

/// Adds to the weights of the members at `positions`, 1.. as in a row with its length in element 0, their shares u[1..]
/// of the weights of something that is made of them.
inline void AddShares(double const* ofWhole, double const* u, int const* positions, double* w) {
  double const gx = ofWhole[0], gy = ofWhole[1], gz = ofWhole[2], v = ofWhole[3];
  int const n = positions[0];
  for (int m = 1; m <= n; ++m) {
    double* const sum = w + kWeightColumns * (positions[m] - 1);
    double const share = u[m];
    sum[0] += share * gx;
    sum[1] += share * gy;
    sum[2] += share * gz;
    sum[3] += share * v;
  }
}

/// Adds the weights `own` of the first n members to theirs.
inline void AddFirst(double const* own, int n, double* w) {
  for (int k = 0; k < kWeightColumns * n; ++k) w[k] += own[k];
}
