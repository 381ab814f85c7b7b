// Points from CSV files: a point set whose columns are as long as it, or one line that says what is wrong.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "cli/points/PointSet.h"
#include "fuzz/FuzzFolder.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  auto const file = folder.Write("points.csv", reinterpret_cast<char const*>(data), size);
  try {
    zyngrad::PointSet const points = zyngrad::ReadPoints(file, {"value"});
    if (points.y.size() != points.size() || points.z.size() != points.size()) std::abort();
    if (!points.rows.empty() && points.rows.size() != points.size()) std::abort();
    for (std::size_t i = 0; i < points.size(); ++i)
      if (!std::isfinite(points.x[i]) || !std::isfinite(points.y[i]) || !std::isfinite(points.z[i]))
        std::abort();
  } catch (std::exception const& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();
  }
  return 0;
}
