#include "python/src/PythonExchange.h"

#include <utility>

namespace zyn_python {

namespace py = pybind11;

PythonExchange::PythonExchange(py::object exchange, py::ssize_t nCells)
    : exchange_(std::move(exchange)), nCells_(nCells) {
  if (!PyCallable_Check(exchange_.ptr()))
    throw py::type_error(
        "partition.exchange must be callable: exchange(field) fills the halo cells in place");
}

void PythonExchange::DDM_Exch(double* field) {
  py::gil_scoped_acquire const interpreter;
  py::array_t<double> const lent({nCells_}, {static_cast<py::ssize_t>(sizeof(double))}, field + 1,
                                 py::none());
  exchange_(lent);
  // Whoever kept it would read freed memory later.
  if (lent.ref_count() > 1)
    throw std::runtime_error(
        "exchange(field) must not keep the field, which is lent for the call; keep a copy");
}

int PythonExchange::AllMin(int& value) {
  py::gil_scoped_acquire const interpreter;
  if (py::hasattr(exchange_, "minimum")) value = py::cast<int>(exchange_.attr("minimum")(value));
  return 0;
}

}  // namespace zyn_python
