#include "cli/faces/FaceReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "cli/base/TextTable.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

std::string PlaceText(FacePlace const& place, int digits) {
  return Place(place.at[0], place.at[1], place.at[2], digits);
}

std::string CellsText(FacePlace const& place) {
  std::string const cell = std::to_string(place.cell);
  return place.other > 0 ? cell + " and " + std::to_string(place.other) : cell;
}

std::string FacesText(std::int64_t count) { return Grouped(count) + (count == 1 ? " face" : " faces"); }

/// "face 12 of rank 0 at (x, y, z)".
std::string FaceText(FacePlace const& place, int digits) {
  return "face " + std::to_string(place.face) + " of rank " + std::to_string(place.rank) + " at " +
         PlaceText(place, digits);
}

void PrintErrors(std::ostream& out, FaceErrors const& errors, int digits) {
  bool const hasMax = errors.maxPlace.face > 0;
  TextTable table({{"faces"},
                   {"L1"},
                   {"L2"},
                   {"L2 relative"},
                   {"maximum"},
                   {"at face"},
                   {"of rank"},
                   {"of cells", Align::Left},
                   {"at", Align::Left}});
  table.AddRow(
      {Grouped(errors.nFaces), Scientific(errors.l1), Scientific(errors.l2), Scientific(errors.relativeL2),
       Scientific(errors.max), hasMax ? std::to_string(errors.maxPlace.face) : "-",
       hasMax ? std::to_string(errors.maxPlace.rank) : "-", hasMax ? CellsText(errors.maxPlace) : "-",
       hasMax ? PlaceText(errors.maxPlace, digits) : "-"});
  out << "errors against the exact value" << '\n' << '\n';
  table.Print(out);
}

void PrintTimes(std::ostream& out, FaceTimes const& times) {
  constexpr double kMilli = 1e3;
  TextTable table({{"set-up ms"}, {"us per face"}, {"first call ms"}, {"later calls ms"}, {"ns per face"}});
  table.AddRow({Fixed(times.setUp * kMilli, 3), Fixed(times.usPerFace, 2), Fixed(times.first * kMilli, 3),
                Fixed(times.later * kMilli, 3), Fixed(times.nsPerFace, 1)});
  out << "\ntimes of the slowest rank\n\n";
  table.Print(out);
}

void PrintWarnings(std::ostream& out, FaceResults const& results) {
  FaceRowCheck const& rows = results.rows;
  if (rows.nOff > 0 && !results.GivesNoValues()) {  // otherwise the line above has said that all rows are 0
    out << "  warning: the weights of " << FacesText(rows.nOff) << " do not sum to 1 within "
        << Scientific(kRowSumTolerance, 1) << "; worst: " << Scientific(rows.worstSum, 6) << " at "
        << FaceText(rows.worst, results.placeDigits) << '\n';
  }
  if (rows.nNotFinite > 0) {
    out << "  warning: the weights of " << FacesText(rows.nNotFinite)
        << " are not finite; first: " << FaceText(rows.firstNotFinite, results.placeDigits) << '\n';
  }
  std::int64_t const n = results.NotFiniteFaces();
  if (n == 0 && !results.whyNotFinite.empty()) {
    out << "  search method " << results.settings.method
        << ": the values are meaningless: " << results.whyNotFinite << '\n';
  }
  if (n > 0) {
    out << "  search method " << results.settings.method << ": the values are not finite at " << Grouped(n)
        << " of " << Grouped(results.errors.nFaces) << ' ' << NameOf(results.group) << " faces"
        << (results.whyNotFinite.empty() ? "" : ": " + results.whyNotFinite) << '\n';
  }
}

ordered_json PlaceAsJson(FacePlace const& place) {
  if (place.face == 0) return nullptr;
  return {{"face", place.face},
          {"rank", place.rank},
          {"cell", place.cell},
          {"other", place.other},
          {"place", place.at}};
}

ordered_json ErrorsAsJson(FaceErrors const& errors) {
  return {{"area", errors.area},
          {"l1", errors.l1},
          {"l2", errors.l2},
          {"l2Relative", errors.relativeL2},
          {"max", errors.max},
          {"maxAt", PlaceAsJson(errors.maxPlace)},
          {"notFinite", errors.nNotFinite}};
}

}  // namespace

void PrintFaceResults(std::ostream& out, FaceResults const& results) {
  out << Grouped(results.errors.nFaces) << ' ' << NameOf(results.group) << " faces by search method "
      << results.settings.method << ", " << StencilSizesInWords(results.stencils) << '\n';
  if (results.GivesNoValues()) {
    out << "search method 4 computes no values on boundary faces, only slopes along the normal: all values "
           "are 0 "
           "by design, so there are no errors to show\n";
  } else {
    PrintErrors(out, results.errors, results.placeDigits);
  }
  PrintTimes(out, results.times);
  PrintWarnings(out, results);
}

ordered_json FaceResultsAsJson(FaceResults const& results) {
  FaceTimes const& times = results.times;
  ordered_json json = {{"group", NameOf(results.group)}, {"faces", results.errors.nFaces}};
  json["valuesByDesignZero"] = results.GivesNoValues();
  json["stencils"] = StencilSizesAsJson(results.stencils);
  json["seconds"] = {{"setUp", times.setUp}, {"firstCall", times.first}, {"laterCalls", times.later}};
  json["usSetUpPerFace"] = times.usPerFace;
  json["nsPerFace"] = times.nsPerFace;
  json["errors"] = results.GivesNoValues() ? ordered_json(nullptr) : ErrorsAsJson(results.errors);
  json["rows"] = {{"notSummingToOne", results.rows.nOff},
                  {"worstSum", results.rows.worstSum},
                  {"worstAt", PlaceAsJson(results.rows.worst)},
                  {"notFinite", results.rows.nNotFinite},
                  {"firstNotFiniteAt", PlaceAsJson(results.rows.firstNotFinite)}};
  if (!results.whyNotFinite.empty()) json["whyNotFinite"] = results.whyNotFinite;
  return json;
}

}  // namespace zyngrad
