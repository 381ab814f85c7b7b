#pragma once

#include "foundation/Export.h"

/// A point in space, or a triple of coefficients, with an integer that it carries along.
///
/// The operators are not those of a vector: `a + b` and `a - b` change `a` and return it, and make no new object.
/// Work on a copy if `a` has to stay as it is.
class ZYN_EXPORT IBCnode {
 public:
  IBCnode() = default;

  /// `tag` is 0 whatever the fourth argument is; SetData sets it.
  IBCnode(double x, double y, double z, int tag);
  IBCnode(IBCnode const&) = default;
  virtual ~IBCnode();

  /// Takes x, y, z and keeps its own `tag`; copy() takes the tag too.
  IBCnode& operator=(IBCnode const& other);
  void copy(IBCnode& other);

  IBCnode& operator+(IBCnode const& other);   ///< adds x, y, z in place and keeps `tag`
  IBCnode& operator+=(IBCnode const& other);  ///< as operator+
  IBCnode& operator-(IBCnode const& other);   ///< subtracts x, y, z in place and keeps `tag`

  void SetData(double x, double y, double z, int tag);

  /// ADDS to x, y, z, in spite of its name; keeps `tag`.
  void SetDataVector(double dx, double dy, double dz);

  void Set_X(double x);
  void Set_Y(double y);
  void Set_Z(double z);

  double x = 0.0, y = 0.0, z = 0.0;
  int tag = 0;  ///< such as a cell number
};
