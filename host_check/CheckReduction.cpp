#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "host_check/CollectiveChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

// One more than the largest range of whole numbers that single precision holds: 16777217 becomes 16777216 in a
// reduction of floats.
constexpr int kEqualValue = 16777217;

/// A running hash (FNV-1a) of 64-bit words.
class WordHash {
 public:
  void Add(std::uint64_t word) {
    for (int byte = 0; byte < 8; ++byte) {
      value_ = (value_ ^ ((word >> (8 * byte)) & 0xFF)) * 0x100000001B3ULL;
    }
  }
  void Add(double number) {
    std::uint64_t word = 0;
    std::memcpy(&word, &number, sizeof word);
    Add(word);
  }
  /// 30 bits of the hash, so that its negative is an int as well.
  int Value() const { return static_cast<int>((value_ ^ (value_ >> 32)) & 0x3FFFFFFF); }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325ULL;
};

int AllMinOf(CZYNCom& reduction, int value) {
  reduction.AllMin(value);
  return value;
}

}  // namespace

int PartitionMark(HostView const& view) {
  constexpr int kCells = 8;
  WordHash hash;
  for (int const count : {view.nCell, view.nInner, view.nNode}) hash.Add(static_cast<std::uint64_t>(count));
  for (int c = 1; c <= std::min(view.nInner, kCells); ++c) {
    if (!view.centreSound[c]) continue;
    Vec3 const centre = view.centres[c];
    for (double const x : {centre.x, centre.y, centre.z}) hash.Add(x);
  }
  return hash.Value();
}

int CheckReduction(HostView const& view, CZYNCom& reduction, HostCheckReport& report) {
  int const equal = AllMinOf(reduction, kEqualValue);
  if (equal != kEqualValue) {
    report.Add(HostBreach::MinimumWrong, 0,
               [&] { return Text("AllMin gave ", equal, " when every partition passed ", kEqualValue); });
  }

  int const mark = PartitionMark(view);
  int const minimum = AllMinOf(reduction, mark);
  if (minimum > mark) {
    report.Add(HostBreach::MinimumWrong, 0, [&] {
      return Text("AllMin gave ", minimum, ", more than the ", mark, " that this partition passed");
    });
  }

  // If the partitions got different results, the minimum of the results and the minimum of their negatives
  // cannot both equal what this partition passes.
  int const least = AllMinOf(reduction, minimum), greatest = -AllMinOf(reduction, -minimum);
  if (least != minimum || greatest != minimum) {
    report.Add(HostBreach::MinimumDiffers, 0, [&] {
      return Text("AllMin gave ", minimum, " here; of what it gave on all partitions the least is ", least,
                  " and the greatest ", greatest);
    });
  }
  return minimum;
}

void CheckExchangeChoice(CZYNCom& reduction, CZyn3dGV const* globals, HostCheckReport& report) {
  // A partition without the object passes values that change neither minimum.
  int const choice = globals != nullptr && globals->UseNonBlockingExch != 0 ? 1 : 0;
  int const least = AllMinOf(reduction, globals != nullptr ? choice : 1);
  int const greatest = -AllMinOf(reduction, -choice);
  if (globals == nullptr || least >= greatest) return;
  report.Add(HostBreach::ExchangeChoiceDiffers, 0, [&] {
    return Text("UseNonBlockingExch is ", choice == 0 ? "zero" : "not zero",
                " here, but not so on all partitions");
  });
}

bool CheckAnyCells(bool hasCells, CZYNCom& reduction, HostCheckReport& report) {
  int const allLackThem = AllMinOf(reduction, hasCells ? 0 : 1);
  if (hasCells || allLackThem != 1) return true;
  report.Add(HostBreach::BadCount, 0,
             [] { return std::string("NInnerCells = 0 on every partition: the mesh is empty"); });
  return false;
}

}  // namespace host_check
