#pragma once

/// The record of the cell operator: a point with the number of its cell, or the weights of d/dx, d/dy, d/dz
/// with the number of the cell or face whose row they stand in.
///
/// Every writer fills both triples alike, and every reader takes the first. The second is part of the layout of 56
/// bytes. There are no virtual operations, so a table of these consists of numbers alone.
struct RBFnode {
  double x = 0.0, y = 0.0, z = 0.0;
  double x0 = 0.0, y0 = 0.0, z0 = 0.0;  ///< x, y, z again
  int id = 0;

  /// Fills both triples.
  void Set(double px, double py, double pz, int newId) {
    x = x0 = px;
    y = y0 = py;
    z = z0 = pz;
    id = newId;
  }
};
