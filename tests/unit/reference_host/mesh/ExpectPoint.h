#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

inline void ExpectPoint(Point const& found, Point const& expected, double tolerance) {
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found[i], expected[i], tolerance) << "direction " << i;
}

}  // namespace reference_host
