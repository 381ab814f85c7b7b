// STL files: triangles whose surface is welded, checked and searched, or one line that says what is wrong.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "cli/bodies/StlReader.h"
#include "cli/bodies/TriangleSurface.h"
#include "cli/bodies/WindingNumber.h"
#include "fuzz/FuzzFolder.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  auto const file = folder.Write("body.stl", reinterpret_cast<char const*>(data), size);
  try {
    std::vector<double> const corners = zyngrad::ReadStl(file);
    if (corners.empty() || corners.size() % 9 != 0) std::abort();
    for (double const x : corners)
      if (!std::isfinite(x)) std::abort();
    zyngrad::TriangleSurface const surface = zyngrad::WeldTriangles(corners);
    if (3 * surface.triangles.size() > corners.size() || surface.points.size() > corners.size() / 3)
      std::abort();
    for (zyngrad::Triangle const& t : surface.triangles)
      for (std::int64_t const corner : t)
        if (corner < 0 || corner >= static_cast<std::int64_t>(surface.points.size())) std::abort();
    zyngrad::WindingNumber const winding(surface.points, surface.triangles);
    winding.IsInside({corners[0], corners[1], corners[2]});
    winding.IsInside({0.5 * corners[0] + 0.1, corners[4], corners[8]});
  } catch (std::exception const& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();
  }
  return 0;
}
