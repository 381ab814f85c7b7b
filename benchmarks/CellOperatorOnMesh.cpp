#include "benchmarks/CellOperatorOnMesh.h"

#include <mpi.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"

namespace benchmarks {

namespace {

std::string NewFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "rbf_benchmark_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the folder " + name);
  return name;
}

// As the operator does it. Volatile, since GCC 12 loses such a rounding in loops that it vectorises.
double InSinglePrecision(double value) {
  float const volatile rounded = static_cast<float>(value);
  return static_cast<double>(rounded);
}

}  // namespace

void CellSystems::Clear() {
  order.clear();
  matrices.clear();
  columns.clear();
}

CellOperatorOnMesh::CellOperatorOnMesh(std::string const& meshSpec,
                                       std::map<std::string, reference_host::BoundaryGroup> const& groups)
    : folder_(NewFolder()), loaded_(reference_host::LoadMesh(MPI_COMM_WORLD, meshSpec, groups, {})) {
  loaded_.partition->SetBaseFileName(folder_ + "/run.cas");
}

CellOperatorOnMesh::~CellOperatorOnMesh() {
  ReleaseOperator();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

CZynRBFInternalObject& CellOperatorOnMesh::NewOperator() {
  ReleaseOperator();
  op_ = std::make_unique<CZynRBFInternalObject>();
  op_->getZyn3dGV(loaded_.partition->globals(), nullptr, nullptr, loaded_.partition->mesh());
  op_->getPartitionFace(loaded_.partition->partitionFaces());
  return *op_;
}

// Without the host objects, which the operator would destroy.
void CellOperatorOnMesh::ReleaseOperator() {
  if (op_ == nullptr) return;
  op_->m_pGV = nullptr;
  op_->m_pPartFace = nullptr;
  op_.reset();
}

void CellOperatorOnMesh::AppendSystem(int cell, CellSystems& systems) {
  int const n = op_->m_ppRBFCellConn[cell][0];
  points_.clear();
  for (int k = 1; k <= n; ++k) {
    RBFnode const& node = op_->m_pRBFnode[op_->m_ppRBFCellConn[cell][k]];
    points_.push_back({node.x, node.y, node.z});
  }
  std::size_t const order = static_cast<std::size_t>(n) + 1, start = systems.matrices.size();
  systems.order.push_back(n + 1);
  systems.matrices.resize(start + order * order);
  PlainDQKernel const kernel(op_->Span, op_->m_pSupportLength[cell]);
  FillKernelMatrix(kernel, points_.data(), n, systems.matrices.data() + start, n + 1);
  AddConstantTerm(systems.matrices.data() + start, n);
  for (DQVector const& point : points_) {
    DQVector const g = kernel.Gradient(OffsetBetween(point, points_[0]));
    for (double const component : {g.x, g.y, g.z}) systems.columns.push_back(InSinglePrecision(component));
  }
  systems.columns.insert(systems.columns.end(), 3, 0.0);
}

}  // namespace benchmarks
