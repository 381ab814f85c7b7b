#include "reference_host/slabs/CgnsSlabReader.h"

#include <memory>
#include <utility>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/cgns/CgnsSlabTopology.h"

namespace reference_host {

MeshSlab ReadCgnsSlab(MpiCommunicator const& communicator, std::string const& file) {
  std::unique_ptr<CgnsFile> cgns;
  std::vector<CgnsSection> sections;
  RunTogether(communicator, [&] {
    cgns = std::make_unique<CgnsFile>(file);
    sections = cgns->Sections();
    if (sections.empty()) cgns->Fail("the zone has no section of elements");
  });
  CgnsSlabTopology topology = HasCgnsPolygons(sections) ? JoinCgnsSlabPolyhedra(communicator, *cgns, sections)
                                                        : JoinCgnsSlabCells(communicator, *cgns, sections);
  AssignCgnsSlabPatches(communicator, *cgns, sections, topology);
  return std::move(topology.mesh);
}

}  // namespace reference_host
