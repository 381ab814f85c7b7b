// Times of bodies from STL files on one core: reading, joining corners, building the tree, and telling cells inside from
// cells outside.
//   bodies_benchmark [TRIANGLES [CELLS]]      the default is 100 000 and 1 000 000

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "cli/base/Timing.h"
#include "cli/bodies/StlReader.h"
#include "cli/bodies/TriangleSurface.h"
#include "cli/bodies/WindingNumber.h"
#include "tests/unit/cli/bodies/TestSurfaces.h"

namespace {

using namespace zyngrad;  // NOLINT(google-build-using-namespace): all that is measured is there

std::string TextStl(std::vector<double> const& corners) {
  std::string text = "solid a\n";
  char line[128];
  for (std::size_t i = 0; i < corners.size(); i += 3) {
    if (i % 9 == 0) text += "facet normal 0 0 0\n outer loop\n";
    std::snprintf(line, sizeof line, "  vertex %.9g %.9g %.9g\n", corners[i], corners[i + 1], corners[i + 2]);
    text += line;
    if (i % 9 == 6) text += " endloop\nendfacet\n";
  }
  return text + "endsolid a\n";
}

void TimeReading(char const* kind, std::string const& content) {
  std::string const file = (std::filesystem::temp_directory_path() / "bodies_benchmark.stl").string();
  std::ofstream(file, std::ios::binary) << content;
  Stopwatch const watch;
  std::size_t const n = ReadStl(file).size() / 9;
  double const seconds = watch.Seconds();
  std::printf("read %zu triangles, %s: %.3f s, %.0f MB/s\n", n, kind, seconds,
              static_cast<double>(content.size()) * 1e-6 / seconds);
  std::filesystem::remove(file);
}

}  // namespace

int main(int argc, char** argv) {
  double const nTriangles = argc > 1 ? std::atof(argv[1]) : 1e5, nCells = argc > 2 ? std::atof(argv[2]) : 1e6;
  int const nTube = static_cast<int>(std::sqrt(nTriangles / 4.0));
  TriangleSurface const torus = Torus(2.0, 0.5, 2 * nTube, nTube);
  std::vector<double> const corners = CornersOf(torus);
  TimeReading("binary", BinaryStl(corners));
  TimeReading("text", TextStl(corners));

  Stopwatch const weld;
  TriangleSurface const surface = WeldTriangles(corners);
  std::printf("join corners: %.3f s\n", weld.Seconds());
  Stopwatch const build;
  WindingNumber const winding(surface.points, surface.triangles);
  std::printf("build the tree: %.3f s\n", build.Seconds());

  // Cells of a box around the body, twice as high.
  int const n = static_cast<int>(std::cbrt(nCells));
  long nInside = 0;
  Stopwatch const search;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < n; ++k) {
        double const x = 5.2 * (i + 0.5) / n - 2.6, y = 5.2 * (j + 0.5) / n - 2.6,
                     z = 2.0 * (k + 0.5) / n - 1.0;
        nInside += winding.IsInside({x, y, z}) ? 1 : 0;
      }
    }
  }
  double const seconds = search.Seconds(), count = static_cast<double>(n) * n * n;
  std::printf("tell inside from outside: %.0f cells in %.2f s, %.2f us each; %ld inside\n", count, seconds,
              1e6 * seconds / count, nInside);
  double const share = static_cast<double>(nInside) / count * 5.2 * 5.2 * 2.0;
  std::printf("their volume is %.4f times that of the body\n",
              share / VolumeOf(surface.points, surface.triangles));
}
