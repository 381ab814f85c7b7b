#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"

namespace zyn_python {

/// Exchange and reduction by a callable of Python: exchange(field) fills the halo cells of an array of all cells in
/// place; exchange.minimum(value), if it is there, returns the minimum of a whole number over the partitions.
class PythonExchange : public CCommunication, public CZYNCom {
 public:
  /// @param[in] nCells  length of a field
  PythonExchange(pybind11::object exchange, pybind11::ssize_t nCells);

  void DDM_Exch(double* field) override;
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override {}
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId) override { DDM_Exch(field); }
  int AllMin(int& value) override;

  pybind11::object& callable() { return exchange_; }  ///< for the garbage collector

 private:
  pybind11::object exchange_;
  pybind11::ssize_t nCells_;
};

}  // namespace zyn_python
