#include "benchmarks/CellOperatorOnMesh.h"

#include <mpi.h>
#include <stdlib.h>

#include <cstddef>
#include <filesystem>
#include <stdexcept>

namespace benchmarks {

namespace {

std::string NewFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "rbf_benchmark_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the folder " + name);
  return name;
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

// Takes the host objects back first, since the operator would destroy them.
void CellOperatorOnMesh::ReleaseOperator() {
  if (op_ == nullptr) return;
  op_->m_pGV = nullptr;
  op_->m_pPartFace = nullptr;
  op_.reset();
}

void CellOperatorOnMesh::AppendSystem(int cell, CellSystems& systems) {
  system_.Assemble(*op_, cell);
  auto const order = static_cast<std::size_t>(system_.Order());
  double const *const matrix = system_.Matrix(), *const columns = system_.RightHandSides();
  systems.order.push_back(system_.Order());
  systems.matrices.insert(systems.matrices.end(), matrix, matrix + order * order);
  systems.columns.insert(systems.columns.end(), columns, columns + 3 * order);
}

}  // namespace benchmarks
