#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "host/ZYNKNCompParm.h"

namespace zyn_python {

/// The settings of one interpolation, handed to the operator by a call, so that no file is read or written.
class InterpolationSettings : public CZYNKNCMPCompParm {
 public:
  /// Throws ValueError for a setting that is out of range.
  /// @param[in] nMethods  methods are 1..nMethods
  InterpolationSettings(int method, int nMethods, int span, int number) {
    RequireRange("method", method, 1, nMethods);
    RequireRange("span", span, 1, kMost);
    RequireRange("number", number, 1, kMost);
    faces_.iSearch_method = points_.iSearch_method = method;
    faces_.Span = points_.Span = span;
    faces_.Search_number = points_.Search_number = number;
    faces_.Search_distance = points_.Search_distance = -1.0;  // the default
  }

  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &faces_; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points_; }

 private:
  static constexpr int kMost = 1000000000;

  static void RequireRange(char const* name, int value, int first, int last) {
    if (value < first || value > last)
      throw pybind11::value_error(std::string(name) + " must be in " + std::to_string(first) + ".." +
                                  std::to_string(last) + ", not " + std::to_string(value));
  }

  CZYNCMP_FaceRBF_Parm faces_;
  CZYNCMP_IBRBF_Parm points_;
};

}  // namespace zyn_python
