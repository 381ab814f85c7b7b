#include "reference_host/openfoam/DecomposedCase.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <system_error>
#include <tuple>
#include <utility>

#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/openfoam/FoamStorage.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

/// N of a name PREFIXN, where N has only digits; -1 for other names.
int NumberBehind(std::string const& prefix, std::string const& name) {
  std::string const digits = name.substr(std::min(prefix.size(), name.size()));
  bool const fits = name.compare(0, prefix.size(), prefix) == 0 && !digits.empty() && digits.size() < 9 &&
                    digits.find_first_not_of("0123456789") == std::string::npos;
  return fits ? std::stoi(digits) : -1;
}

/// Numbers of the subfolders PREFIXN, ascending.
std::vector<int> NumberedFolders(std::string const& folder, std::string const& prefix) {
  std::vector<int> numbers;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    int const number = NumberBehind(prefix, entry->path().filename().string());
    std::error_code ignored;
    if (number >= 0 && entry->is_directory(ignored)) numbers.push_back(number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

bool BeginsWith(std::string const& text, std::string const& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

/// Removes the patches of the types processor and processorCyclic from the mesh and makes cuts of them.
class CutCollector {
 public:
  CutCollector(ProcessorMesh& result, std::vector<PatchFaces> const& facesOfPatch, int processor,
               int nProcessors)
      : result_(result), facesOfPatch_(facesOfPatch), processor_(processor), nProcessors_(nProcessors) {}

  void Collect() {
    FaceMesh& mesh = result_.mesh;
    std::vector<int> newNumber(mesh.patches.size(), -1);
    std::vector<Patch> kept;
    for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
      if (IsCut(mesh.patches[p])) continue;
      newNumber[p] = static_cast<int>(kept.size());
      numberOfName_[mesh.patches[p].name] = newNumber[p];
      kept.push_back(mesh.patches[p]);
    }
    for (Patch& patch : kept) {
      for (int& partner : patch.partners) partner = newNumber[partner];
    }
    for (Period& period : mesh.periods) {
      period.patch = newNumber[period.patch];
      period.partner = newNumber[period.partner];
    }
    for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
      if (IsCut(mesh.patches[p])) newNumber[p] = AddCut(mesh.patches[p], facesOfPatch_[p], kept);
    }
    mesh.patches = std::move(kept);
    for (int& patch : mesh.facePatch) patch = patch < 0 ? -1 : newNumber[patch];
    SortCuts();
  }

 private:
  [[noreturn]] void Fail(std::string const& patch, std::string const& what) const {
    throw MeshError(result_.folder + ": patch " + Quoted(patch) + " " + what);
  }

  static bool IsCut(Patch const& patch) { return BeginsWith(patch.type, "processor"); }

  /// Returns the patch to which the faces belong. @param[in] kept  the patches that are no cuts
  int AddCut(Patch const& patch, PatchFaces const& faces, std::vector<Patch> const& kept) {
    if (patch.type != "processor" && patch.type != "processorCyclic") {
      Fail(patch.name, "of type " + Quoted(patch.type) + " cannot be read");
    }
    int through = -1;
    if (patch.type == "processorCyclic") {
      auto const found = numberOfName_.find(faces.referPatch);
      if (found != numberOfName_.end()) through = found->second;
      if (through < 0 || kept[through].partners.empty()) {
        Fail(patch.name,
             "needs a referPatch of type cyclic with a neighbourPatch, not " + Quoted(faces.referPatch));
      }
    }
    if (faces.processor != processor_) {
      Fail(patch.name, "says that this is processor " + std::to_string(faces.processor));
    }
    if (faces.neighbour < 0 || faces.neighbour >= nProcessors_ || faces.neighbour == processor_) {
      Fail(patch.name, "leads to processor " + std::to_string(faces.neighbour) + " of " +
                           std::to_string(nProcessors_) + ", counted from 0");
    }
    if (faces.count > 0) {
      result_.cuts.push_back({static_cast<int>(faces.neighbour), patch.name, static_cast<int>(faces.first),
                              static_cast<int>(faces.count), through});
    }
    return through;
  }

  void SortCuts() const {
    std::sort(result_.cuts.begin(), result_.cuts.end(), [](ProcessorCut const& a, ProcessorCut const& b) {
      return std::tie(a.neighbour, a.patch) < std::tie(b.neighbour, b.patch);
    });
    for (std::size_t i = 1; i < result_.cuts.size(); ++i) {
      if (result_.cuts[i].neighbour != result_.cuts[i - 1].neighbour) continue;
      if (result_.cuts[i].patch != result_.cuts[i - 1].patch) continue;
      Fail(result_.cuts[i].patchName,
           "is the second one of its kind to processor " + std::to_string(result_.cuts[i].neighbour));
    }
  }

  ProcessorMesh& result_;
  std::vector<PatchFaces> const& facesOfPatch_;
  int processor_;
  int nProcessors_;
  std::map<std::string, int> numberOfName_;  // of the patches that are no cuts
};

/// The number of processors of a case in the collated format.
int CountCollatedProcessors(std::string const& folder) {
  std::vector<CollatedFolder> folders = CollatedFolders(folder);
  if (folders.empty()) throw MeshError(folder + ": no processor folders");
  std::sort(folders.begin(), folders.end(),
            [](CollatedFolder const& a, CollatedFolder const& b) { return a.first < b.first; });
  int const nProcessors = folders.front().nProcessors;
  int next = 0;  // the first processor without a folder so far
  for (CollatedFolder const& collated : folders) {
    if (collated.nProcessors != nProcessors) {
      throw MeshError(folder + ": folders for " + std::to_string(nProcessors) + " and for " +
                      std::to_string(collated.nProcessors) +
                      " processors (processorsN); remove those of one of them");
    }
    if (collated.first > next) break;
    next = std::max(next, collated.last + 1);
  }
  if (next < nProcessors) {
    throw MeshError(folder + ": no folder has the pieces of processor " + std::to_string(next) + " of " +
                    std::to_string(nProcessors) + " (processorsN_A-B)");
  }
  return nProcessors;
}

}  // namespace

bool IsDecomposedCase(std::string const& folder) {
  std::error_code ignored;
  return fs::is_directory(fs::path(folder) / "processor0", ignored) || !CollatedFolders(folder).empty();
}

int CountProcessorFolders(std::string const& folder) {
  std::vector<int> const numbers = NumberedFolders(folder, "processor");
  if (numbers.empty()) return CountCollatedProcessors(folder);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] != static_cast<int>(i)) {
      throw MeshError(folder + ": there is a folder processor" + std::to_string(numbers[i]) +
                      ", but no processor" + std::to_string(i));
    }
  }
  return static_cast<int>(numbers.size());
}

std::string ProcessorFolder(std::string const& folder, int processor) {
  return (fs::path(folder) / ("processor" + std::to_string(processor))).string();
}

std::string StoredProcessorFolder(std::string const& folder, int processor) {
  std::string own = ProcessorFolder(folder, processor);
  std::error_code ignored;
  if (fs::is_directory(own, ignored)) return own;
  for (CollatedFolder const& collated : CollatedFolders(folder)) {
    if (collated.first <= processor && processor <= collated.last) return collated.path;
  }
  return own;
}

std::vector<std::int64_t> ReadAddressing(std::string const& polyMesh, std::string const& file,
                                         std::int64_t nItems) {
  if (!FoamFileExists((fs::path(polyMesh) / file).string())) return {};
  FoamFile foam(polyMesh, file);
  TextCursor& text = foam.Text();
  constexpr FoamRange kAny = {"number", std::numeric_limits<std::int64_t>::min(),
                              std::numeric_limits<std::int64_t>::max()};
  std::vector<std::int64_t> numbers =
      ReadFoamLabels<std::int64_t>(text, foam.Format(), "number", nItems, kAny).WrittenOut();
  if (static_cast<std::int64_t>(numbers.size()) != nItems) {
    text.Fail(std::to_string(numbers.size()) + " numbers where the mesh needs " + std::to_string(nItems));
  }
  return numbers;
}

ProcessorMesh ReadProcessorMesh(std::string const& folder, int processor, int nProcessors) {
  ProcessorMesh result;
  result.folder = (fs::path(ProcessorFolder(folder, processor)) / "constant" / "polyMesh").string();
  PolyMesh polyMesh = ReadPolyMeshWithPatches(result.folder);
  CheckMesh(polyMesh.mesh, result.folder);
  result.mesh = std::move(polyMesh.mesh);
  CutCollector(result, polyMesh.facesOfPatch, processor, nProcessors).Collect();

  result.globalCell = ReadAddressing(result.folder, "cellProcAddressing", result.mesh.nCells);
  result.globalPoint = ReadAddressing(result.folder, "pointProcAddressing",
                                      static_cast<std::int64_t>(result.mesh.points.size()));
  result.faceAddress = ReadAddressing(result.folder, "faceProcAddressing", result.mesh.nFaces());
  return result;
}

}  // namespace reference_host
