#include "benchmarks/ProcessMeasures.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace benchmarks {

double ProcessorSeconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double StatusBytes(std::string const& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (word == name + ":") {
      double kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  return 0;
}

void ForgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

QuietOutput::QuietOutput() {
  std::fflush(stdout);
  formerOutput_ = dup(STDOUT_FILENO);
  int const nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

QuietOutput::~QuietOutput() {
  std::fflush(stdout);
  dup2(formerOutput_, STDOUT_FILENO);
  close(formerOutput_);
}

std::string BoxText(double cellsWanted, std::string const& shape) {
  double const perBox = shape == "tet" ? 6 : 1;
  int const n = std::max(2, static_cast<int>(std::lround(std::cbrt(cellsWanted / perBox))));
  std::string const side = std::to_string(n);
  return "box:" + side + "," + side + "," + side + ":" + shape;
}

}  // namespace benchmarks
