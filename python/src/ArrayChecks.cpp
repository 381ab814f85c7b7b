#include "python/src/ArrayChecks.h"

#include <cstdint>
#include <functional>

namespace zyn_python {
namespace {

std::string TypeName(py::handle object) { return py::str(py::type::of(object).attr("__name__")); }

std::string TextOf(py::handle object) { return py::str(object); }

std::string ShapeText(py::array const& array) { return TextOf(array.attr("shape")); }

bool HasShape(py::array const& array, Shape const& shape) {
  if (array.ndim() != shape.rank) return false;
  for (int i = 0; i < shape.rank; ++i) {
    if (shape.length[i] != Shape::kAny && array.shape(i) != shape.length[i]) return false;
  }
  return true;
}

/// Only for arrays that are known to be wrong: finds the first reason.
[[noreturn]] void RefuseArray(py::array const& array, char const* name, Shape const& shape) {
  std::string const prefix = std::string(name) + " must ";
  py::dtype const dtype = array.dtype();
  if (dtype.kind() != 'f' || dtype.itemsize() != sizeof(double))
    throw py::type_error(prefix + "have the dtype float64, not " + TextOf(dtype));
  if (!py::cast<bool>(dtype.attr("isnative")))
    throw py::value_error(prefix + "have the byte order of this machine, not the dtype " + TextOf(dtype));
  if (!HasShape(array, shape))
    throw py::value_error(prefix + "have the shape " + shape.Text() + ", not " + ShapeText(array));
  if ((array.flags() & py::array::c_style) == 0)
    throw py::value_error(prefix + "be C-contiguous; its strides are " + TextOf(array.attr("strides")) +
                          " bytes");
  if (!py::cast<bool>(array.attr("flags").attr("aligned")))
    throw py::value_error(prefix + "be aligned to 8 bytes");
  throw py::value_error(prefix + "be writeable");
}

py::array ArrayOf(py::handle object, char const* name) {
  if (!py::isinstance<py::array>(object))
    throw py::type_error(std::string(name) + " must be an array of numpy, not " + TypeName(object));
  return py::reinterpret_borrow<py::array>(object);
}

template <class Number>
std::vector<int> Narrowed(py::array const& array, char const* name, py::ssize_t first, py::ssize_t last) {
  auto const numbers = py::array_t<Number, py::array::c_style | py::array::forcecast>::ensure(array);
  if (!numbers) throw py::error_already_set();
  std::vector<int> result(static_cast<std::size_t>(numbers.size()));
  Number const* const data = numbers.data();
  for (std::size_t i = 0; i < result.size(); ++i) {
    auto const number = static_cast<py::ssize_t>(data[i]);
    if (number < first || number > last) {
      throw py::value_error(std::string(name) + "[" + std::to_string(i) + "] is " + std::to_string(data[i]) +
                            ", but must be in " + std::to_string(first) + ".." + std::to_string(last));
    }
    result[i] = static_cast<int>(number);
  }
  return result;
}

}  // namespace

Shape::Shape(std::initializer_list<py::ssize_t> lengths) : rank(static_cast<int>(lengths.size())) {
  int i = 0;
  for (py::ssize_t const one : lengths) length[i++] = one;
}

py::ssize_t Shape::Size() const {
  py::ssize_t size = 1;
  for (int i = 0; i < rank; ++i) size *= length[i];
  return size;
}

std::string Shape::Text() const {
  std::string text = "(";
  for (int i = 0; i < rank; ++i) {
    if (i > 0) text += ", ";
    text += length[i] == kAny ? std::string("n") : std::to_string(length[i]);
  }
  return text + (rank == 1 ? ",)" : ")");
}

double* LentElements(py::handle object, char const* name, Shape const& shape, Access access) {
  py::array const array = ArrayOf(object, name);
  constexpr int kNeeded =
      py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_ | py::detail::npy_api::NPY_ARRAY_ALIGNED_;
  int const needed = access == Access::kWrite ? kNeeded | py::detail::npy_api::NPY_ARRAY_WRITEABLE_ : kNeeded;
  bool const fits = py::detail::check_flags(array.ptr(), needed) && HasShape(array, shape) &&
                    py::detail::npy_api::get().PyArray_EquivTypes_(
                        py::detail::array_proxy(array.ptr())->descr, py::dtype::of<double>().ptr());
  if (!fits) RefuseArray(array, name, shape);
  return static_cast<double*>(py::detail::array_proxy(array.ptr())->data ? const_cast<void*>(array.data())
                                                                         : nullptr);
}

void RefuseOverlap(double const* out, py::ssize_t n, double const* other, py::ssize_t m,
                   char const* otherName) {
  std::less<double const*> const below;
  if (below(out, other + m) && below(other, out + n))
    throw py::value_error(std::string("out shares memory with ") + otherName);
}

std::vector<int> CopiedNumbers(py::handle object, char const* name, py::ssize_t nNumbers, py::ssize_t first,
                               py::ssize_t last) {
  py::array const array = ArrayOf(object, name);
  char const kind = array.dtype().kind();
  if (kind != 'i' && kind != 'u')
    throw py::type_error(std::string(name) + " must have whole numbers as elements, not " +
                         TextOf(array.dtype()));
  Shape const shape = {nNumbers};
  if (!HasShape(array, shape))
    throw py::value_error(std::string(name) + " must have the shape " + shape.Text() + ", not " +
                          ShapeText(array));
  bool const isNarrow = array.itemsize() <= 4 && kind == 'i';
  return isNarrow ? Narrowed<std::int32_t>(array, name, first, last)
                  : Narrowed<std::int64_t>(array, name, first, last);
}

py::ssize_t WholeNumber(py::handle object, std::string const& name, py::ssize_t first, py::ssize_t last) {
  if (!PyIndex_Check(object.ptr())) throw py::type_error(name + " must be an int, not " + TypeName(object));
  // A number beyond ssize_t becomes the nearest one, which the bounds exclude.
  py::ssize_t const number = PyNumber_AsSsize_t(object.ptr(), nullptr);
  if (number == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
  if (number < first || number > last)
    throw py::value_error(name + " must be in " + std::to_string(first) + ".." + std::to_string(last) +
                          ", not " + TextOf(object));
  return number;
}

py::array_t<double> NewArray(Shape const& shape) {
  return py::array_t<double>(py::array::ShapeContainer(shape.length, shape.length + shape.rank));
}

py::array ReadOnlyView(py::array const& array) {
  py::array view(array.dtype(), std::vector<py::ssize_t>(array.shape(), array.shape() + array.ndim()),
                 std::vector<py::ssize_t>(array.strides(), array.strides() + array.ndim()), array.data(),
                 array);
  view.attr("flags").attr("writeable") = false;
  return view;
}

}  // namespace zyn_python
