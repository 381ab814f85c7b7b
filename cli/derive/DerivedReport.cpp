#include "cli/derive/DerivedReport.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/gradient/NormsReport.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

void PrintNorms(std::ostream& out, std::vector<DerivedOfMethod> const& results, NormsOfWhat what,
                int placeDigits) {
  TextTable table(
      NormsColumns({{"method", Align::Left}, {"quantity", Align::Left}, {"cells", Align::Left}}, what));
  for (DerivedOfMethod const& result : results) {
    std::string label = result.label;
    for (DerivedField const& field : result.fields) {
      table.AddRow(
          NormsRow({label, field.quantity->name, "interior"}, field.norms.interior, what, placeDigits));
      table.AddRow(NormsRow({"", "", "boundary"}, field.norms.boundary, what, placeDigits));
      label.clear();
    }
  }
  table.Print(out);
}

void PrintRanges(std::ostream& out, std::vector<DerivedOfMethod> const& results) {
  TextTable table(
      {{"method", Align::Left}, {"quantity", Align::Left}, {"component", Align::Left}, {"from"}, {"to"}});
  for (DerivedOfMethod const& result : results) {
    std::string label = result.label;
    for (DerivedField const& field : result.fields) {
      std::string quantity = field.quantity->name;
      std::vector<char const*> const& components = field.quantity->components;
      for (std::size_t k = 0; k < field.lowest.size(); ++k) {
        table.AddRow({label, quantity, components.empty() ? "" : components[k], Scientific(field.lowest[k]),
                      Scientific(field.highest[k])});
        label.clear();
        quantity.clear();
      }
    }
  }
  table.Print(out);
}

ordered_json QuantityAsJson(DerivedField const& field, bool hasErrors) {
  Quantity const& quantity = *field.quantity;
  NormsOfWhat const what = hasErrors ? NormsOfWhat::Errors : NormsOfWhat::Quantity;
  ordered_json json = {{"quantity", quantity.name}};
  json["interior"] = NormsAsJson(field.norms.interior, what);
  json["boundary"] = NormsAsJson(field.norms.boundary, what);
  for (std::size_t k = 0; k < field.lowest.size(); ++k) {
    std::string const component = quantity.components.empty() ? "value" : quantity.components[k];
    json["range"][component] = {field.lowest[k], field.highest[k]};
  }
  return json;
}

}  // namespace

std::int64_t DerivedOfField::NotFiniteCells() const {
  std::int64_t n = 0;
  for (DerivedOfMethod const& method : methods)
    for (DerivedField const& one : method.fields) n += one.NotFiniteCells();
  return n;
}

void DerivedOfField::DropArrays() {
  for (ExactQuantity& one : exact) one.values = std::vector<double>();
  for (DerivedOfMethod& method : methods)
    for (DerivedField& one : method.fields) one.values = one.cellError = std::vector<double>();
}

void PrintDerivedFields(std::ostream& out, DerivedOfField const& of, int placeDigits) {
  std::vector<DerivedOfMethod> const& results = of.methods;
  if (results.empty()) return;
  bool const hasErrors = !of.exact.empty();
  out << "\nquantities derived from the gradient of " << OneLine(of.field);
  if (hasErrors) {
    out << ": errors; the L2 norms of the exact ones are ";
    std::vector<DerivedField> const& fields = results.front().fields;
    for (std::size_t q = 0; q < fields.size(); ++q)
      out << (q == 0 ? "" : ", ") << fields[q].quantity->name << ' ' << Scientific(of.exact[q].l2);
    out << "\n\n";
  } else {
    out << ": length and range of their components\n\n";
  }
  PrintNorms(out, results, hasErrors ? NormsOfWhat::Errors : NormsOfWhat::Quantity, placeDigits);
  if (!hasErrors) {
    out << '\n';
    PrintRanges(out, results);
  }
  for (DerivedOfMethod const& result : results) {
    for (DerivedField const& field : result.fields) {
      std::int64_t const n = field.NotFiniteCells();
      if (n > 0)
        out << "  " << result.label << ": " << field.quantity->name << " is not finite in " << Grouped(n)
            << " of " << Grouped(field.norms.interior.nCells + field.norms.boundary.nCells) << " cells\n";
    }
  }
}

ordered_json DerivedFieldsAsJson(DerivedOfField const& results) {
  ordered_json list = ordered_json::array();
  for (DerivedOfMethod const& method : results.methods) {
    ordered_json json = {{"field", results.field}, {"method", method.label}};
    bool const hasErrors = !results.exact.empty();
    ordered_json& quantities = json[hasErrors ? "errors" : "norms"] = ordered_json::array();
    for (std::size_t q = 0; q < method.fields.size(); ++q) {
      quantities.push_back(QuantityAsJson(method.fields[q], hasErrors));
      if (hasErrors) quantities.back()["exactL2"] = results.exact[q].l2;
    }
    list.push_back(std::move(json));
  }
  return list;
}

}  // namespace zyngrad
