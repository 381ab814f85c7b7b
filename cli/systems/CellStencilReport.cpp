#include "cli/systems/CellStencilReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/output/MeshScale.h"
#include "cli/systems/ConditionEstimate.h"

namespace zyngrad {
namespace {

using Align = TextTable::Align;

constexpr int kDigits = 9;

std::string General(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.9g", value);
  return buffer;
}

/// Number of digits in which the stencil's other points differ from its first.
int DigitsOfPoints(CellStencil const& stencil) {
  double largest = 0.0, nearest = std::numeric_limits<double>::infinity();
  for (StencilMember const& member : stencil.members) {
    DQVector const& p = member.point;
    largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    double const distance = Length(OffsetBetween(stencil.members.front().point, p));
    if (distance > 0.0) nearest = std::min(nearest, distance);
  }
  return PlaceDigits(largest, nearest);
}

void AddWeightRow(TextTable& table, std::vector<std::string> cells, DQVector const& weight) {
  for (double const value : {weight.x, weight.y, weight.z}) cells.push_back(Scientific(value, kDigits));
  table.AddRow(std::move(cells));
}

std::string ConditionText(double condition) {
  if (std::isnan(condition)) return "none, the matrix is not finite";
  return std::isinf(condition) ? "infinite" : Scientific(condition, 3);
}

void PrintLengths(std::ostream& out, CellStencil const& stencil) {
  bool const isPlain = !stencil.settings.shapeNormalize;
  TextTable table({{"stencil", Align::Left}, {"", Align::Left}});
  table.AddRow({"members", std::to_string(stencil.members.size())});
  table.AddRow({"support length", General(stencil.supportLength)});
  table.AddRow({"extents", Place(stencil.extent.x, stencil.extent.y, stencil.extent.z)});
  table.AddRow({"Span", General(stencil.settings.span)});
  table.AddRow({"kernel form", isPlain ? "plain" : "shape-normalised"});
  if (isPlain) table.AddRow({"support radius", General(stencil.settings.span * stencil.supportLength)});
  table.Print(out);
}

void PrintWeights(std::ostream& out, CellStencil const& stencil) {
  TextTable table({{"member"},
                   {"cell"},
                   {"place", Align::Left},
                   {"point", Align::Left},
                   {"distance"},
                   {"weight d/dx"},
                   {"weight d/dy"},
                   {"weight d/dz"}});
  int number = 0;
  int const digits = DigitsOfPoints(stencil);
  for (StencilMember const& member : stencil.members) {
    double const distance = Length(OffsetBetween(stencil.members.front().point, member.point));
    AddWeightRow(
        table,
        {std::to_string(++number), member.cell > 0 ? std::to_string(member.cell) : "-", OneLine(member.place),
         Place(member.point.x, member.point.y, member.point.z, digits), Scientific(distance)},
        member.weight);
  }
  DQVector const sum = stencil.SumOfWeights();
  DQVector const& m = stencil.multiplier;
  AddWeightRow(table, {"", "", "sum of the weights", "", ""}, sum);
  AddWeightRow(table, {"", "", "multiplier", "", ""}, m);
  AddWeightRow(table, {"", "", "both", "", ""}, {sum.x + m.x, sum.y + m.y, sum.z + m.z});
  table.Print(out);
}

void PrintOrigin(std::ostream& out, CellStencil const& stencil) {
  auto const n = std::count_if(stencil.members.begin(), stencil.members.end(),
                               [](StencilMember const& member) { return member.atOrigin; });
  if (n == 0) return;
  out << "  " << n << (n == 1 ? " member stands" : " members stand")
      << " at the origin, beside symmetry faces: the weights are wrong; --group NAME=wall avoids it\n";
}

nlohmann::ordered_json AsJson(DQVector const& vector) { return {vector.x, vector.y, vector.z}; }

}  // namespace

nlohmann::ordered_json CellStencilAsJson(CellStencil const& stencil) {
  nlohmann::ordered_json json;
  json["supportLength"] = stencil.supportLength;
  json["extents"] = AsJson(stencil.extent);
  json["span"] = stencil.settings.span;
  json["shapeNormalize"] = stencil.settings.shapeNormalize;
  json["members"] = nlohmann::ordered_json::array();
  for (StencilMember const& member : stencil.members) {
    nlohmann::ordered_json cell = nullptr;
    if (member.cell > 0) cell = member.cell;
    json["members"].push_back({{"cell", cell},
                               {"kind", member.place},
                               {"atOrigin", member.atOrigin},
                               {"place", AsJson(member.point)},
                               {"weights", AsJson(member.weight)}});
  }
  json["sumOfWeights"] = AsJson(stencil.SumOfWeights());
  json["multiplier"] = AsJson(stencil.multiplier);
  json["order"] = stencil.Order();
  json["condition"] = ConditionEstimate(stencil.matrix, stencil.Order());
  return json;
}

void PrintCellStencil(std::ostream& out, CellStencil const& stencil) {
  PrintLengths(out, stencil);
  out << '\n';
  PrintWeights(out, stencil);
  PrintOrigin(out, stencil);
  out << "\ncondition number of the system of order " << stencil.Order()
      << " (1-norm, estimate): " << ConditionText(ConditionEstimate(stencil.matrix, stencil.Order())) << '\n';
}

}  // namespace zyngrad
