#include "reference_host/openfoam/BoundaryFile.h"

#include <limits>

#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"

namespace reference_host {
namespace {

// name { type wall; nFaces 10; startFace 20; ... }
BoundaryFilePatch ReadPatchOf(FoamFile& file) {
  TextCursor& text = file.Text();
  BoundaryFilePatch patch;
  patch.name = text.Peek() == '"' ? text.QuotedString("a patch name") : text.Name("a patch name");
  patch.nFaces = patch.startFace = -1;
  text.Expect('{');
  for (std::string key = file.Keyword(); !key.empty(); key = file.Keyword()) {
    if (key == "nFaces") patch.nFaces = text.Integer("the number of faces of a patch");
    if (key == "startFace") patch.startFace = text.Integer("the first face of a patch");
    if (key == "neighbProcNo") {
      std::int64_t const number = text.Integer("the number of a processor");
      if (number < 0 || number > std::numeric_limits<int>::max())
        text.Fail("processor " + std::to_string(number) + " cannot be the neighbour of " +
                  Quoted(patch.name));
      patch.neighbour = static_cast<int>(number);
    }
    std::string const value = file.Value();
    if (key == "type") patch.type = value;
    if (key == "neighbourPatch") patch.partner = value;
    if (key == "referPatch") patch.referPatch = value;
  }
  if (patch.name.empty() || patch.type.empty() || patch.nFaces < 0 || patch.startFace < 0)
    text.Fail("patch " + Quoted(patch.name) + " needs a name, a type, nFaces and startFace");
  return patch;
}

}  // namespace

std::vector<BoundaryFilePatch> ReadBoundaryFile(std::string const& polyMesh) {
  FoamFile file(polyMesh, "boundary");
  std::vector<BoundaryFilePatch> patches;
  ReadFoamList(file.Text(), "the number of patches", [&] { patches.push_back(ReadPatchOf(file)); });
  return patches;
}

}  // namespace reference_host
