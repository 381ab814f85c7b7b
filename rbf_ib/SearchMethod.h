#pragma once

/// Values of iSearch_method in the point operator.
enum SearchMethod : int { kWholeCube = 1, kNearest = 2, kByTopology = 3 };
