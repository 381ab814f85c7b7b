#pragma once

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host_check/CheckHostData.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/host_check/LentFaces.h"

/// What one partition lends. A test breaks it by replacing pointers.
struct LentHost {
  CZYN3DFiniteVolumeMesh* mesh = nullptr;
  CPartitionFace_DLL* partitionFaces = nullptr;
  CCommunication* communication = nullptr;
  CZYNCom* reduction = nullptr;
  CZyn3dGV* globals = nullptr;
};

/// A mesh in partitions, each a thread, complete and sound until a test changes something.
class CheckedRun {
 public:
  CheckedRun(reference_host::FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts)
      : CheckedRun(reference_host::SplitMesh(mesh, partOfCell, nParts)) {}

  explicit CheckedRun(reference_host::FaceMesh const& mesh)
      : CheckedRun(mesh, std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0), 1) {}

  explicit CheckedRun(std::vector<reference_host::MeshPart> const& parts)
      : group_(static_cast<int>(parts.size())) {
    for (reference_host::MeshPart const& part : parts) Add(part);
    reference_host::RunInProcess(group_, [this](int p) { partitions[p]->CompleteHalo(*communications[p]); });
  }

  /// Collective over the threads; one report per partition.
  std::vector<host_check::HostCheckReport> Check(host_check::HostCheckOptions const& options = {}) {
    std::vector<host_check::HostCheckReport> reports(lent.size());
    reference_host::RunInProcess(group_, [&](int p) {
      LentHost const& host = lent[p];
      int const n = CheckHostData(host.mesh, host.partitionFaces, host.communication, host.reduction,
                                  host.globals, reports[p], options);
      if (n != reports[p].Count()) throw std::logic_error("the result is not the report's count");
    });
    return reports;
  }

  std::vector<std::unique_ptr<reference_host::HostPartition>> partitions;
  std::vector<std::unique_ptr<LentFaces>> faces;
  std::vector<std::unique_ptr<reference_host::InProcessCommunication>> communications;
  std::vector<std::unique_ptr<reference_host::InProcessReduction>> reductions;
  std::vector<LentHost> lent;

 private:
  void Add(reference_host::MeshPart const& part) {
    auto partition = std::make_unique<reference_host::HostPartition>(part);
    partition->SetBaseFileName("part" + std::to_string(partition->part()) + ".cas");
    faces.push_back(std::make_unique<LentFaces>(*partition->partitionFaces()));
    communications.push_back(std::make_unique<reference_host::InProcessCommunication>(group_, *partition));
    reductions.push_back(std::make_unique<reference_host::InProcessReduction>(group_));
    lent.push_back({partition->mesh(), faces.back().get(), communications.back().get(),
                    reductions.back().get(), partition->globals()});
    partitions.push_back(std::move(partition));
  }

  reference_host::InProcessGroup group_;
};

/// The whole report as text, for the message of a failing test.
inline std::string TextOf(host_check::HostCheckReport const& report) {
  std::ostringstream out;
  report.Print(out);
  return out.str();
}

/// Whether the report has a breach of the kind with the entity and with the words in its text.
inline bool Tells(host_check::HostCheckReport const& report, host_check::HostBreach kind, int entity,
                  std::string const& words) {
  for (auto const& entry : report.Told()) {
    if (entry.kind == kind && entry.entity == entity && entry.text.find(words) != std::string::npos)
      return true;
  }
  return false;
}
