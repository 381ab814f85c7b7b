#pragma once

#include <iostream>

namespace Foam {
namespace zyn {

/// Keeps what operators print while they are set up off the screen.
///
/// A stream without a buffer discards what it is given. Setting a buffer makes its state good again.
class SilentOutput {
 public:
  SilentOutput() : screen_(std::cout.rdbuf(nullptr)) {}
  ~SilentOutput() { std::cout.rdbuf(screen_); }
  SilentOutput(SilentOutput const&) = delete;
  SilentOutput& operator=(SilentOutput const&) = delete;

 private:
  std::streambuf* const screen_;
};

}  // namespace zyn
}  // namespace Foam
