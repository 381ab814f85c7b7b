#include "cli/vtk/PvdFile.h"

#include <cstddef>

#include "cli/output/OutputFile.h"

namespace zyngrad {

void WritePvd(std::string const& file, std::vector<std::string> const& times,
              std::vector<std::string> const& grids) {
  std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"0.1\">\n<Collection>\n";
  for (std::size_t t = 0; t < times.size(); ++t)
    text += "<DataSet timestep=\"" + times[t] + "\" part=\"0\" file=\"" + grids[t] + "\"/>\n";
  WriteText(file, text + "</Collection>\n</VTKFile>\n");
}

}  // namespace zyngrad
