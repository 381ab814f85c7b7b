#pragma once

/// The axis-aligned box around points. A bound moves on a strict comparison only, so a coordinate that is not a
/// number moves none.
struct BoundingBox {
  /// An empty box. Its bounds start inside out, at `far` times the unit of length.
  explicit BoundingBox(double far = 1e10)
      : xmax(-far), ymax(-far), zmax(-far), xmin(far), ymin(far), zmin(far) {}

  void Widen(double x, double y, double z) {
    WidenAxis(x, xmax, xmin);
    WidenAxis(y, ymax, ymin);
    WidenAxis(z, zmax, zmin);
  }

  double xmax, ymax, zmax;
  double xmin, ymin, zmin;

 private:
  static void WidenAxis(double value, double& highest, double& lowest) {
    if (value > highest) highest = value;
    if (value < lowest) lowest = value;
  }
};
