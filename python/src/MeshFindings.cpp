#include "python/src/MeshFindings.h"

#include "host_check/CheckHostData.h"
#include "python/src/Globals.h"
#include "python/src/Unlocked.h"

namespace zyn_python {

namespace py = pybind11;

using reference_host::QualitySums;

std::vector<Breach> CheckMeshOf(Mesh& mesh, int maxPerKind) {
  if (maxPerKind < 1) throw py::value_error("max_per_kind must be 1 or more");
  MeshHost& host = mesh.host();
  host_check::HostCheckOptions options;
  options.maxPerKind = maxPerKind;
  options.cellRows = options.nodeTables = host.HasNodes();
  options.nonBlocking = false;  // the operators of this module exchange one field after another
  Globals globals;
  globals.MakeIterationArrays(mesh.nAll());
  globals.SetFileName("mesh.run");

  std::vector<Breach> breaches;
  RunUnlocked(mesh.lock(), [&] {
    host_check::HostCheckReport report;
    host_check::CheckHostData(host.mesh(), host.partitionFaces(), host.exchange(), host.reduction(), &globals,
                              report, options);
    for (auto const& entry : report.Told())
      breaches.push_back(
          {host_check::NameOf(entry.kind), entry.entity, entry.text, report.Count(entry.kind)});
  });
  return breaches;
}

void BindMeshFindings(py::module_& module) {
  py::class_<Breach>(module, "Breach", "A breach of the rules for meshes, found by Mesh.check.")
      .def_readonly("kind", &Breach::kind, "Name of the rule, for example 'area-wrong-way'.")
      .def_readonly("entity", &Breach::entity,
                    "Number of the face, cell or node as the text names it, counted from 1; 0: none.")
      .def_readonly("text", &Breach::text, "What was found and where.")
      .def_readonly("count", &Breach::count, "Breaches of this kind in all, reported or not.")
      .def("__str__", [](Breach const& self) { return self.kind + ": " + self.text; })
      .def("__repr__", [](Breach const& self) { return "<Breach " + self.kind + ": " + self.text + ">"; });

  auto const mean = [](double sum, QualitySums const& q) {
    return q.nFaces > 0 ? sum / static_cast<double>(q.nFaces) : 0.0;
  };
  py::class_<QualitySums>(module, "Quality", R"(
Two measures of the faces between two cells.

Non-orthogonality: the angle between the line of the two cell centres and the area vector, in degrees; 0 for boxes.
Skewness: the distance of the face's centre from the point where linear interpolation gives its value, over the
distance of the two cell centres.
)")
      .def_property_readonly(
          "mean_non_orthogonality", [mean](QualitySums const& q) { return mean(q.sumNonOrthogonality, q); },
          "Average angle, degrees.")
      .def_readonly("max_non_orthogonality", &QualitySums::maxNonOrthogonality, "Largest angle, degrees.")
      .def_property_readonly(
          "mean_skewness", [mean](QualitySums const& q) { return mean(q.sumSkewness, q); },
          "Average skewness.")
      .def_readonly("max_skewness", &QualitySums::maxSkewness, "Largest skewness.")
      .def_readonly("face_count", &QualitySums::nFaces, "Number of faces between two cells.");
}

}  // namespace zyn_python
