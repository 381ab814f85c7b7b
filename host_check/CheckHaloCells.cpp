#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "host_check/CollectiveChecks.h"
#include "host_check/HaloExchange.h"
#include "host_check/HaloSources.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
/// A cell with more partition faces than that counts as one with as many.
constexpr int kMostFacesOfCell = 64;
/// A mesh with more periods than that is none that the check knows.
constexpr std::size_t kMostPeriods = 32;

/// Three exchanged fields.
class ExchangedPlaces {
 public:
  /// Collective. @param placeOf  Vec3(int cell), for the interior cells
  template <class PlaceOf>
  ExchangedPlaces(HaloExchange& exchange, PlaceOf const& placeOf)
      : x_(exchange.Exchanged([&](int c) { return placeOf(c).x; })),
        y_(exchange.Exchanged([&](int c) { return placeOf(c).y; })),
        z_(exchange.Exchanged([&](int c) { return placeOf(c).z; })) {}

  bool IsFilled(int c) const { return x_.IsFilled(c) && y_.IsFilled(c) && z_.IsFilled(c); }
  Vec3 operator[](int c) const { return {x_[c], y_[c], z_[c]}; }

 private:
  ProbeField x_, y_, z_;
};

/// Looks up whether a place is one of many, up to a tolerance.
class PlaceSet {
 public:
  /// @param width  greater than twice any tolerance
  explicit PlaceSet(double width) : width_(width) {}

  void Add(Vec3 const& place) { places_[BoxOf(place)].push_back(place); }

  bool Has(Vec3 const& place, double tolerance) const {
    // The tolerance may reach into the next box, in each direction.
    for (int corner = 0; corner < 8; ++corner) {
      Vec3 const offset = {(corner & 1) != 0 ? tolerance : -tolerance,
                           (corner & 2) != 0 ? tolerance : -tolerance,
                           (corner & 4) != 0 ? tolerance : -tolerance};
      auto const box = places_.find(BoxOf(place + offset));
      if (box == places_.end()) continue;
      for (Vec3 const& other : box->second)
        if (Norm(other - place) <= tolerance) return true;
    }
    return false;
  }

 private:
  std::array<double, 3> BoxOf(Vec3 const& p) const {
    return {std::floor(p.x / width_), std::floor(p.y / width_), std::floor(p.z / width_)};
  }

  double width_;
  std::map<std::array<double, 3>, std::vector<Vec3>> places_;
};

/// The partition faces of each interior cell, ascending.
class PartitionFacesOfCells {
 public:
  explicit PartitionFacesOfCells(HostView const& view) : first_(static_cast<std::size_t>(view.nInner) + 2) {
    CheckedFaceGroup const& group = view.PartitionGroup();
    for (int f = 1; f <= group.count; ++f)
      if (group.cvSound[f]) ++first_[static_cast<std::size_t>(group.cv[f]) + 1];
    for (std::size_t c = 1; c < first_.size(); ++c) {
      most_ = std::max(most_, first_[c]);
      first_[c] += first_[c - 1];
    }
    faces_.resize(static_cast<std::size_t>(first_.back()));
    std::vector<int> next(first_);
    for (int f = 1; f <= group.count; ++f)
      if (group.cvSound[f])
        faces_[static_cast<std::size_t>(next[static_cast<std::size_t>(group.cv[f])]++)] = f;
  }

  int Most() const { return most_; }

  /// The k-th face of cell c, k from 0; 0: it has no such face.
  int Face(int c, int k) const {
    auto const i = static_cast<std::size_t>(c);
    return k < first_[i + 1] - first_[i] ? faces_[static_cast<std::size_t>(first_[i] + k)] : 0;
  }

 private:
  std::vector<int> first_;  // [0..nInner+1] of a cell's faces in faces_
  std::vector<int> faces_;
  int most_ = 0;
};

/// What stands around a partition face, as one of its two sides sees it.
struct FaceSurroundings {
  Vec3 face, near, beyond;  ///< centres of the face, of the cell on this side, of the halo cell
  Vec3 area;                ///< out of the cell on this side
};

/// For print: 0 for components that are round-off of the others.
Vec3 WithoutRoundOff(Vec3 const& shift) {
  double const least = 1e-12 * Norm(shift);
  auto const rounded = [least](double x) { return std::abs(x) < least ? 0.0 : x; };
  return {rounded(shift.x), rounded(shift.y), rounded(shift.z)};
}

class HaloCellCheck {
 public:
  HaloCellCheck(HostView const& view, HaloExchange& exchange, CZYNCom& reduction,
                std::vector<HaloSource> const& sources, HostCheckOptions const& options,
                HostCheckReport& report)
      : view_(view),
        exchange_(exchange),
        reduction_(reduction),
        sources_(sources),
        options_(options),
        report_(report) {}

  void Check() {
    CheckMeans();
    // A partition without centres takes part all the same, because the exchange is collective.
    ExchangedPlaces const owners(exchange_, [this](int c) { return CentreOrUnknown(c); });
    for (std::size_t i = 0; i < sources_.size(); ++i) CompareCentre(i, owners);
    FindPeriods(owners);
    for (Misplaced const& halo : misplaced_) {
      if (halo.isPeriodic) continue;
      if (halo.isAsFar) {
        ++nMeans_;
        ++nMeansElsewhere_;
      } else {
        TellMisplaced(halo);
      }
    }
    TellNotes();
  }

 private:
  using Halo = HaloExchange::Halo;

  /// A halo cell that holds a copy of a cell that stands elsewhere.
  struct Misplaced {
    Halo halo;
    Vec3 owner;  // the centre of that cell
    bool isPeriodic = false;
    bool isAsFar = false;    // from its face as that cell from one of its own
    std::size_t period = 0;  // 0: turned; otherwise the number of the shift, from 1
  };

  /// The halo cells that stand at the same distance from the cells whose data they hold.
  struct Period {
    Vec3 shift;
    int nCells = 0;
    bool isSound = true;
  };

  CheckedFaceGroup const& Group() const { return view_.PartitionGroup(); }

  Vec3 CentreOrUnknown(int c) const {
    return view_.centreSound[c] ? view_.centres[c] : Vec3{kUnknown, kUnknown, kUnknown};
  }

  void CheckMeans() {
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      if (!sources_[i].isMean) continue;
      ++nMeans_;
      Halo const halo = exchange_.Halos()[i];
      if (!(std::abs(sources_[i].sumOfWeights - 1.0) <= kOfWeights)) {
        report_.Add(HostBreach::HaloLosesConstant, halo.cell, [&] {
          return Text("DDM_Exch brings ", sources_[i].sumOfWeights, " to ", NameOf(halo),
                      " from a field that is 1 in all cells");
        });
      } else if (!options_.interpolatedHalo) {
        report_.Add(HostBreach::HaloIsMean, halo.cell, [&] {
          return Text("DDM_Exch brings no copy of one cell's value to ", NameOf(halo),
                      ", but a mean of several, or a rounded value");
        });
      }
    }
  }

  void CompareCentre(std::size_t i, ExchangedPlaces const& owners) {
    Halo const halo = exchange_.Halos()[i];
    if (!sources_[i].isFilled || !owners.IsFilled(halo.cell)) {
      report_.Add(HostBreach::HaloNotFilled, halo.cell,
                  [&] { return Text("DDM_Exch does not fill ", NameOf(halo, ", which lies beyond ")); });
      return;
    }
    Vec3 const owner = owners[halo.cell];
    // Values that are not finite are reported by the partition that owns them.
    if (!view_.centreSound[halo.cell] || !IsFinite(owner)) return;
    double const away = Norm(owner - view_.centres[halo.cell]);
    if (away <= Tolerance(halo)) return;
    if (!sources_[i].isMean) {
      misplaced_.push_back({halo, owner});
    } else if (away > Distance(halo)) {
      // Nearer ones are what non-conforming faces lead to.
      ++nMeansElsewhere_;
    }
  }

  void TellMisplaced(Misplaced const& misplaced) {
    int const cell = misplaced.halo.cell;
    report_.Add(HostBreach::HaloFromElsewhere, cell, [&] {
      return Text(NameOf(misplaced.halo), " has the centre ", view_.centres[cell],
                  ", but the centre that DDM_Exch brings is ", misplaced.owner);
    });
  }

  std::string NameOf(Halo const& halo, char const* beyond = " beyond ") const {
    return view_.CellName(halo.cell) + beyond + Group().Name(halo.face);
  }

  /// Collective. Recognises periodic boundaries among the misplaced halo cells: the owner has a partition face with
  /// the same surroundings, and the halo cell beyond it holds the data of the cell on this side.
  void FindPeriods(ExchangedPlaces const& owners) {
    int nothingToDo = misplaced_.empty() ? 1 : 0;
    reduction_.AllMin(nothingToDo);
    if (nothingToDo >= 1) return;
    PartitionFacesOfCells const faces(view_);
    int leastNegative = -std::min(faces.Most(), kMostFacesOfCell);
    reduction_.AllMin(leastNegative);
    int const nRounds = std::min(-leastNegative, kMostFacesOfCell);
    std::vector<double> const held = NumbersInHaloCells();
    CellNumbers const numberOf(view_);
    for (int k = 0; k < nRounds; ++k) {
      ExchangedPlaces const face(exchange_, [&](int c) { return FaceCentre(faces.Face(c, k)); });
      ExchangedPlaces const beyond(exchange_, [&](int c) { return CentreBeyond(faces.Face(c, k)); });
      ExchangedPlaces const area(exchange_, [&](int c) { return Area(faces.Face(c, k)); });
      ProbeField const returned = exchange_.Exchanged([&](int c) {
        int const f = faces.Face(c, k);
        return f > 0 && Group().otherSound[f] ? held[static_cast<std::size_t>(Group().other[f])] : kUnknown;
      });
      for (Misplaced& misplaced : misplaced_) {
        int const cell = misplaced.halo.cell;
        if (!IsKnown(misplaced.halo)) continue;
        FaceSurroundings const there = {face[cell], misplaced.owner, beyond[cell], area[cell]};
        if (options_.interpolatedHalo)
          misplaced.isAsFar = misplaced.isAsFar || IsAsFar(there, misplaced.halo);
        if (returned[cell] == numberOf(Group().cv[misplaced.halo.face])) Compare(there, misplaced);
      }
    }
    RejectKnownPlaces(owners);
  }

  /// [1..nCell] what the halo cells hold of the CellNumbers.
  std::vector<double> NumbersInHaloCells() const {
    std::vector<double> held(static_cast<std::size_t>(view_.nCell) + 1, kUnknown);
    for (std::size_t i = 0; i < sources_.size(); ++i)
      held[static_cast<std::size_t>(exchange_.Halos()[i].cell)] = sources_[i].number;
    return held;
  }

  Vec3 FaceCentre(int f) const {
    return f > 0 && Group().centreSound[f] ? Group().centre[f] : Vec3{kUnknown, kUnknown, kUnknown};
  }
  Vec3 Area(int f) const {
    return f > 0 && Group().areaSound[f] ? Group().area[f] : Vec3{kUnknown, kUnknown, kUnknown};
  }
  Vec3 CentreBeyond(int f) const {
    return f > 0 && Group().otherSound[f] ? CentreOrUnknown(Group().other[f])
                                          : Vec3{kUnknown, kUnknown, kUnknown};
  }

  /// @param there  a partition face of the halo cell's owner, as that cell sees it
  /// @pre IsKnown
  void Compare(FaceSurroundings const& there, Misplaced& misplaced) {
    Halo const halo = misplaced.halo;
    if (misplaced.isPeriodic) return;
    FaceSurroundings const here = {FaceCentre(halo.face), view_.centres[Group().cv[halo.face]],
                                   view_.centres[halo.cell], Group().area[halo.face]};
    Vec3 const shift = here.beyond - there.near;
    // A halo cell less than that away from its owner is a wrong one. A cell that is its own neighbour stands a
    // whole distance away.
    if (Norm(shift) < 0.5 * Distance(halo)) return;
    // Round-off of the shift is that of the larger coordinates.
    double const tolerance = Tolerance(halo) + 1e-14 * Norm(there.near);
    if (Norm(here.area + there.area) <= kLeastTurn * Norm(here.area)) {
      if (!IsShifted(there, here, shift, tolerance)) return;
      misplaced.period = PeriodOf(shift, tolerance);
      misplaced.isPeriodic = misplaced.period > 0;
    } else {
      misplaced.isPeriodic = IsTurned(there, here, tolerance);
    }
  }

  /// A mean may consist of one value alone, where a face lies within one on the other side. That one has other
  /// surroundings, and its halo cell holds a mean.
  bool IsAsFar(FaceSurroundings const& there, Halo const& halo) const {
    double const depth = Norm(FaceCentre(halo.face) - view_.centres[halo.cell]);
    return std::abs(Norm(there.face - there.near) - depth) <= Tolerance(halo);
  }

  static bool IsShifted(FaceSurroundings const& there, FaceSurroundings const& here, Vec3 const& shift,
                        double tolerance) {
    return Norm(there.face + shift - here.face) <= tolerance &&
           Norm(there.beyond + shift - here.near) <= tolerance;
  }

  /// A rotation keeps the lengths. So does, nearly, a small step sideways: one of 1e-3 of the cells' distance is not
  /// seen here.
  static bool IsTurned(FaceSurroundings const& there, FaceSurroundings const& here, double tolerance) {
    auto const haveEqualLengths = [tolerance](Vec3 const& a, Vec3 const& b) {
      return std::abs(Norm(a) - Norm(b)) <= tolerance;
    };
    return haveEqualLengths(there.face - there.near, here.face - here.beyond) &&
           haveEqualLengths(there.face - there.beyond, here.face - here.near) &&
           haveEqualLengths(there.near - there.beyond, here.near - here.beyond);
  }

  /// The number of the shift, from 1; a new one if need be. 0: there are too many.
  std::size_t PeriodOf(Vec3 const& shift, double tolerance) {
    for (std::size_t p = 0; p < periods_.size(); ++p)
      if (Norm(periods_[p].shift - shift) <= tolerance) return p + 1;
    if (periods_.size() >= kMostPeriods) return 0;
    periods_.push_back({shift});
    return periods_.size();
  }

  /// A halo cell of a periodic boundary stands where no cell is. A halo cell that stands at the centre of another
  /// one's owner has got the wrong data, and so have all with the same shift: on a regular mesh, exchange lists
  /// that are off by one look like a period otherwise.
  void RejectKnownPlaces(ExchangedPlaces const& owners) {
    double width = std::numeric_limits<double>::min();
    for (Misplaced const& misplaced : misplaced_) width = std::max(width, 4.0 * Tolerance(misplaced.halo));
    PlaceSet places(width);
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      int const cell = exchange_.Halos()[i].cell;
      if (!sources_[i].isMean && owners.IsFilled(cell) && IsFinite(owners[cell])) places.Add(owners[cell]);
    }
    for (Misplaced const& misplaced : misplaced_) {
      if (!misplaced.isPeriodic) continue;
      Period& period = PeriodAt(misplaced.period);
      ++period.nCells;
      if (places.Has(view_.centres[misplaced.halo.cell], Tolerance(misplaced.halo))) period.isSound = false;
    }
    for (Misplaced& misplaced : misplaced_)
      misplaced.isPeriodic = misplaced.isPeriodic && PeriodAt(misplaced.period).isSound;
  }

  Period& PeriodAt(std::size_t number) { return number == 0 ? turned_ : periods_[number - 1]; }

  void TellNotes() {
    for (Period const& period : periods_) {
      if (!period.isSound || period.nCells == 0) continue;
      report_.AddNote(Text(period.nCells, " halo cells stand ", WithoutRoundOff(period.shift),
                           " away from the cells whose data they hold: a periodic boundary"));
    }
    if (turned_.isSound && turned_.nCells > 0) {
      report_.AddNote(Text(turned_.nCells,
                           " halo cells stand for cells of another place and direction: a periodic boundary "
                           "by rotation, through which gradients have to be turned"));
    }
    if (options_.interpolatedHalo && nMeans_ > 0) {
      report_.AddNote(Text(nMeans_, " halo cells hold weighted means of cells' values",
                           nMeansElsewhere_ == 0
                               ? ""
                               : Text("; the places of ", nMeansElsewhere_,
                                      " were not checked, because the cells stand elsewhere")));
    }
  }

  /// Whether the places around the halo cell's face are known.
  bool IsKnown(Halo const& halo) const {
    return Group().cvSound[halo.face] && view_.centreSound[Group().cv[halo.face]] &&
           view_.centreSound[halo.cell] && Group().centreSound[halo.face] && Group().areaSound[halo.face];
  }

  /// From the cell on this side to the halo cell; 0 if it is not known.
  double Distance(Halo const& halo) const {
    bool const isKnown = Group().cvSound[halo.face] && view_.centreSound[Group().cv[halo.face]];
    return isKnown ? Norm(view_.centres[halo.cell] - view_.centres[Group().cv[halo.face]]) : 0.0;
  }

  /// Round-off of the coordinates, and a small fraction of the distance between the two cells.
  double Tolerance(Halo const& halo) const {
    return options_.positionTolerance * Distance(halo) + 1e-14 * Norm(view_.centres[halo.cell]);
  }

  static constexpr double kOfWeights = 1e-6;
  static constexpr double kLeastTurn = 1e-4;  // radian, between the two sides of a periodic boundary

  HostView const& view_;
  HaloExchange& exchange_;
  CZYNCom& reduction_;
  std::vector<HaloSource> const& sources_;  // of exchange_.Halos()
  HostCheckOptions const& options_;
  HostCheckReport& report_;

  std::vector<Misplaced> misplaced_;
  std::vector<Period> periods_;
  Period turned_;
  int nMeans_ = 0, nMeansElsewhere_ = 0;
};

}  // namespace

void CheckHaloCells(HostView const& view, HaloExchange& exchange, CZYNCom& reduction,
                    std::vector<HaloSource> const& sources, HostCheckOptions const& options,
                    HostCheckReport& report) {
  HaloCellCheck(view, exchange, reduction, sources, options, report).Check();
}

}  // namespace host_check
