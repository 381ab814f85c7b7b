#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

constexpr int kLongestName = 1023;  // the operators keep a settings file's name in 1024 characters
constexpr int kExtension = 4;       // the dot and three letters
constexpr int kBlock = 4;           // elements of ResetRealBlock and ResetIntBlock

void RequireArray(void const* array, char const* name, char const* extent, HostCheckReport& report) {
  if (array != nullptr) return;
  report.Add(HostBreach::MissingArray, 0, [&] { return Text(name, ", an array ", extent, ", is null"); });
}

/// The memory of an array's elements 1..count, as addresses: pointer arithmetic beyond an array is undefined,
/// and only the count tells where the array ends.
struct Extent {
  std::string name;
  std::uintptr_t begin = 0, end = 0;  // equal: no memory

  bool Overlaps(Extent const& other) const {
    return begin != end && other.begin != other.end && begin < other.end && other.begin < end;
  }
};

template <class Element>
Extent ExtentOf(std::string name, Element const* array, int count) {
  if (array == nullptr || count <= 0) return {std::move(name)};
  auto const address = reinterpret_cast<std::uintptr_t>(array);
  return {std::move(name), address + sizeof(Element),
          address + (static_cast<std::size_t>(count) + 1) * sizeof(Element)};
}

/// All arrays that the operators only read.
class ReadArrays {
 public:
  /// Looks at the rows only of the tables that the options have checked; the others need not be filled.
  ReadArrays(HostView const& view, HostCheckOptions const& options) {
    CZYN3DFiniteVolumeMesh const& m = view.mesh;
    Add(view.nodes, "", "n", view.nNode);
    Add(view.centres, "", "c", view.nCell);
    Add("Volume", m.Volume, view.nInner);
    for (CheckedFaceGroup const& group : view.groups) AddGroup(group, options.nodeTables);
    AddTable("CellCell", m.CellCell, view.nInner, options.cellRows);
    AddTable("CellFace", m.CellFace, view.nInner, options.cellRows);
    AddTable("CellFaceType", m.CellFaceType, view.nInner, options.cellRows);
    AddTable("CellLnods", m.CellLnods, view.nInner, options.nodeTables);
    Add("CellLnodsNumber", m.CellLnodsNumber, view.nInner);
    AddTable("NodeCell", m.NodeCell, view.nNodeUsed, options.nodeTables);
  }

  /// Calls tell(name) for each array, and once for each table, that shares memory with the work array.
  template <class Tell>
  void ForEachOverlap(Extent const& work, Tell const& tell) const {
    for (Extent const& array : arrays_) {
      if (array.Overlaps(work)) tell(array.name);
    }
    for (Table const& table : tables_) {
      for (int i = 1; i <= table.count; ++i) {
        if (!StartsIn(work, table.rows[i])) continue;
        tell("row " + std::to_string(i) + " of " + table.name);
        break;
      }
    }
  }

 private:
  struct Table {
    std::string name;
    int* const* rows;
    int count;
  };

  /// Only the beginning of a row is known.
  static bool StartsIn(Extent const& work, int const* row) {
    auto const address = reinterpret_cast<std::uintptr_t>(row);
    return address >= work.begin && address < work.end;
  }

  template <class Element>
  void Add(std::string name, Element const* array, int count) {
    arrays_.push_back(ExtentOf(std::move(name), array, count));
  }
  void Add(Vec3Arrays const& arrays, std::string const& prefix, std::string const& ending, int count) {
    Add(prefix + "x" + ending, arrays.x, count);
    Add(prefix + "y" + ending, arrays.y, count);
    Add(prefix + "z" + ending, arrays.z, count);
  }
  void AddTable(std::string const& name, int* const* rows, int count, bool isFilled) {
    Add(name, rows, count);
    if (rows != nullptr && isFilled) tables_.push_back({name, rows, count});
  }
  void AddGroup(CheckedFaceGroup const& group, bool hasNodes) {
    Add(group.ArrayName("CV"), group.cv, group.count);
    Add(group.Names().prefix, group.other, group.count);
    Add(group.area, group.ArrayName("S"), "", group.count);
    Add(group.centre, group.Names().prefix, "c", group.count);
    if (group.Names().weightName != nullptr) {
      Add(group.Names().weightName, group.weight, group.count);
      Add(group.Names().typeName, group.type, group.count);
    }
    AddTable(group.ArrayName("Lnods"), group.nodes, group.count, hasNodes);
  }

  std::vector<Extent> arrays_;
  std::vector<Table> tables_;
};

void CheckWorkArrays(HostView const& view, CZyn3dGV const& globals, HostCheckOptions const& options,
                     HostCheckReport& report) {
  Extent const work[] = {ExtentOf("PrevGradX", globals.PrevGradX, view.nCell),
                         ExtentOf("PrevGradY", globals.PrevGradY, view.nCell),
                         ExtentOf("PrevGradZ", globals.PrevGradZ, view.nCell),
                         ExtentOf("ResetRealBlock", globals.ResetRealBlock, kBlock),
                         ExtentOf("ResetIntBlock", globals.ResetIntBlock, kBlock)};
  ReadArrays const arrays(view, options);
  for (Extent const* a = std::begin(work); a != std::end(work); ++a) {
    auto const tell = [&](std::string const& other) {
      report.Add(HostBreach::ArraysOverlap, 0,
                 [&] { return Text(a->name, ", which is overwritten, and ", other, " share memory"); });
    };
    for (Extent const* b = a + 1; b != std::end(work); ++b) {
      if (a->Overlaps(*b)) tell(b->name);
    }
    arrays.ForEachOverlap(*a, tell);
  }
}

/// What is wrong with a file name of at most kLongestName characters; empty if nothing is.
std::string FaultOf(std::string const& name) {
  if (name.empty()) return "is empty";
  std::size_t const dot = name.size() - std::min<std::size_t>(name.size(), kExtension);
  bool endsRight = name.size() > kExtension && name[dot] == '.' && name[dot - 1] != '/';
  for (std::size_t i = dot + 1; i < name.size(); ++i) {
    endsRight = endsRight && std::isalnum(static_cast<unsigned char>(name[i])) != 0;
  }
  return endsRight ? "" : "does not end in a dot and three letters";
}

void CheckFileName(char const* name, HostCheckReport& report) {
  if (name == nullptr) {
    report.Add(HostBreach::BadFileName, 0, [] { return std::string("BaseFileName is null"); });
    return;
  }
  if (std::memchr(name, '\0', kLongestName + 1) == nullptr) {
    report.Add(HostBreach::BadFileName, 0, [] {
      return Text("BaseFileName has no end within ", kLongestName,
                  " characters, more than a settings file's ", "name can have");
    });
    return;
  }
  std::string const fault = FaultOf(name);
  if (fault.empty()) return;
  report.Add(HostBreach::BadFileName, 0, [&] {
    return Text("BaseFileName \"", name, "\" ", fault, ", of which the settings files' names are made");
  });
}

}  // namespace

void CheckGlobals(HostView const& view, CZyn3dGV const& globals, bool countsAreSound,
                  HostCheckOptions const& options, HostCheckReport& report) {
  if (view.nCell > 0) {
    RequireArray(globals.PrevGradX, "PrevGradX", "[1..NCell]", report);
    RequireArray(globals.PrevGradY, "PrevGradY", "[1..NCell]", report);
    RequireArray(globals.PrevGradZ, "PrevGradZ", "[1..NCell]", report);
  }
  RequireArray(globals.ResetRealBlock, "ResetRealBlock", "[1..4]", report);
  RequireArray(globals.ResetIntBlock, "ResetIntBlock", "[1..4]", report);
  if (countsAreSound) CheckWorkArrays(view, globals, options, report);
  CheckFileName(globals.BaseFileName, report);
}

}  // namespace host_check
