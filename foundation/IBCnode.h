#pragma once

#include "foundation/Export.h"

/// A point in space, or a triple of coefficients, with an integer that it carries along.
///
/// The operators are not those of a vector: `a + b` and `a - b` change `a` and give it back, no new object is
/// made. Callers rely on it or work on a copy.
class ZYN_EXPORT IBCnode {
 public:
  IBCnode() = default;

  /// The fourth argument is ignored on purpose: `tag` is 0. SetData sets it.
  IBCnode(double x, double y, double z, int tag);
  IBCnode(IBCnode const&) = default;
  virtual ~IBCnode();

  /// Takes x, y, z; `tag` stays what it was. copy() takes it too.
  IBCnode& operator=(IBCnode const& other);
  void copy(IBCnode& other);

  IBCnode& operator+(IBCnode const& other);   ///< adds x, y, z in place; `tag` stays
  IBCnode& operator+=(IBCnode const& other);  ///< as operator+
  IBCnode& operator-(IBCnode const& other);   ///< subtracts x, y, z in place; `tag` stays

  void SetData(double x, double y, double z, int tag);

  /// ADDS to x, y, z, in spite of the name; `tag` stays.
  void SetDataVector(double dx, double dy, double dz);

  void Set_X(double x);
  void Set_Y(double y);
  void Set_Z(double z);

  double x = 0.0, y = 0.0, z = 0.0;
  int tag = 0;  ///< such as a cell number
};
