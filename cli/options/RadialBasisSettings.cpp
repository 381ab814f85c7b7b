#include "cli/options/RadialBasisSettings.h"

#include "cli/output/RunSettings.h"

namespace zyngrad {

std::string SettingsFileText(RadialBasisSettings const& settings) {
  return "1001\n"
         "Span              = " +
         ShortestText(settings.span) +
         "\n"
         "Shape Normalize   = " +
         (settings.shapeNormalize ? "1" : "0") + "\n";
}

}  // namespace zyngrad
