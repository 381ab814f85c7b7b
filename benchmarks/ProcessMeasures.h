#pragma once

#include <string>

namespace benchmarks {

double ProcessorSeconds();

/// Seconds of the processor, so that what else runs on the machine counts as little as possible.
template <class Call>
double Seconds(Call const& call) {
  double const start = ProcessorSeconds();
  call();
  return ProcessorSeconds() - start;
}

/// A line of the process's status in bytes, such as VmRSS or VmHWM.
double StatusBytes(std::string const& name);

/// VmHWM begins anew at what is in use now.
void ForgetPeak();

/// Sends standard output to nowhere for its lifetime: the operators report their progress there.
class QuietOutput {
 public:
  QuietOutput();
  ~QuietOutput();
  QuietOutput(QuietOutput const&) = delete;
  QuietOutput& operator=(QuietOutput const&) = delete;

 private:
  int formerOutput_;
};

/// "box:n,n,n:shape" with about that many cells.
std::string BoxText(double cellsWanted, std::string const& shape);

}  // namespace benchmarks
