#pragma once

#include <pybind11/pybind11.h>

namespace zyn_python {

/// Whether the garbage collector may take away the object that an instance refers to.
enum class Clearing { kNever, kAllowed };

/// The instance of the class in an object of Python; null before its constructor has run.
template <class Class>
Class* InstanceIn(PyObject* self) {
  auto* const instance = reinterpret_cast<pybind11::detail::instance*>(self);
  bool const isMade = instance->simple_layout && instance->simple_holder_constructed;
  return isMade ? static_cast<Class*>(instance->simple_value_holder[0]) : nullptr;
}

/// For the constructor of py::class_: lets Python's garbage collector see the one object that an instance refers to,
/// besides attributes that were set in Python.
/// Otherwise an exchange that refers back to its mesh or gradient would keep all of them for ever. `Reference` returns
/// null if there is no object. It is enough that one instance of a cycle can be cleared.
template <class Class, pybind11::object* (Class::*Reference)(), Clearing Wanted = Clearing::kNever>
pybind11::custom_type_setup Collectable() {
  return pybind11::custom_type_setup([](PyHeapTypeObject* heapType) {
    PyTypeObject& type = heapType->ht_type;
    type.tp_flags |= Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) -> int {
      Py_VISIT(Py_TYPE(self));
      PyObject** const attributes = _PyObject_GetDictPtr(self);
      if (attributes != nullptr) Py_VISIT(*attributes);
      Class* const instance = InstanceIn<Class>(self);
      pybind11::object const* const object = instance != nullptr ? (instance->*Reference)() : nullptr;
      if (object != nullptr) Py_VISIT(object->ptr());
      return 0;
    };
    type.tp_clear = [](PyObject* self) -> int {
      if (Wanted == Clearing::kNever) return 0;
      PyObject** const attributes = _PyObject_GetDictPtr(self);
      if (attributes != nullptr) Py_CLEAR(*attributes);
      Class* const instance = InstanceIn<Class>(self);
      pybind11::object* const object = instance != nullptr ? (instance->*Reference)() : nullptr;
      if (object != nullptr) *object = pybind11::none();
      return 0;
    };
  });
}

}  // namespace zyn_python
