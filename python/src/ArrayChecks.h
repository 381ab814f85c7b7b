#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace zyn_python {

namespace py = pybind11;

/// The shape that an array must have. A length of kAny may be anything.
struct Shape {
  static constexpr py::ssize_t kAny = -1;

  Shape(std::initializer_list<py::ssize_t> lengths);

  int rank = 0;
  py::ssize_t length[3] = {};

  py::ssize_t Size() const;
  std::string Text() const;  ///< "(3, 1000)"
};

enum class Access { kRead, kWrite };

/// The elements of an array of numpy that is lent as it is: float64 in the machine's byte order, aligned, C-contiguous,
/// of the given shape, and writeable if it is written to. Nothing is copied.
/// Throws TypeError for another type of object or elements, ValueError for the rest; the text begins with `name`.
double* LentElements(py::handle object, char const* name, Shape const& shape, Access access = Access::kRead);

/// Throws ValueError unless the two blocks of memory are disjoint.
/// @param[in] n,m  numbers of elements
void RefuseOverlap(double const* out, py::ssize_t n, double const* other, py::ssize_t m,
                   char const* otherName);

/// Copies an array of whole numbers, of any type and stride, after comparing each with its bounds.
/// Throws TypeError for other elements, ValueError for another shape and for a number outside first..last, with its index.
/// @param[in] nNumbers  wanted length, or Shape::kAny
std::vector<int> CopiedNumbers(py::handle object, char const* name, py::ssize_t nNumbers, py::ssize_t first,
                               py::ssize_t last);

/// A whole number; numpy's count, too. Throws TypeError for another object, ValueError if it is outside first..last.
py::ssize_t WholeNumber(py::handle object, std::string const& name, py::ssize_t first, py::ssize_t last);

/// An array of numpy of that shape, its elements not set.
py::array_t<double> NewArray(Shape const& shape);

/// The same elements in an array that Python cannot write to.
py::array ReadOnlyView(py::array const& array);

}  // namespace zyn_python
