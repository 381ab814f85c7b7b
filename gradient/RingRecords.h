#pragma once

#include "gradient/RingWalk.h"

/// @file
/// The records of cells, and how the Green-Gauss gradients add faces to them: four faces side by side, or the three fields of
/// one face. Stored results are sums over 1/(V + kTiny), or bare sums in cells that are marked.

#if ZYN_HAS_TARGETS

#include <array>

#include "foundation/FaceGroups.h"
#include "gradient/CellSums.h"
#include "gradient/GreenGauss.h"
#include "gradient/ThreeFields.h"

namespace ring_walk {

using four_doubles::At;
using four_doubles::Either;
using four_doubles::Of;
using four_doubles::Same;
using four_doubles::StoreAt;
using four_doubles::Transpose;

/// green_gauss::Median, four side by side.
ZYN_INLINE_AVX2 Four Median(Four phiOther, Four v, Four phiCv) {
  using namespace four_doubles;
  Four const lo = Lesser(v, phiOther), hi = Greater(phiOther, v), hi2 = Lesser(phiCv, hi);
  return Greater(lo, hi2);
}

/// What the sums of a cell are multiplied with when it leaves.
class Scale {
 public:
  Scale(FaceRing const& ring, double const* volume) : ring_(ring), volume_(volume) {}

  ZYN_INLINE_AVX2 Four OfFour(int c) const {
    __builtin_prefetch(volume_ + c + kCellsAhead);
    Four scale = Same(1.0) / (At(volume_ + c) + Same(green_gauss::kTiny));
    if (__builtin_expect(ring_.FourMarks(c) != 0, 0)) {
      alignas(kFour) double each[4];
      StoreAt(each, scale);
      for (int k = 0; k < 4; ++k)
        if (ring_.IsMarked(c + k)) each[k] = 1.0;
      scale = At(each);
    }
    return scale;
  }
  double Of(int c) const { return ring_.IsMarked(c) ? 1.0 : 1.0 / (volume_[c] + green_gauss::kTiny); }

 private:
  FaceRing const& ring_;
  double const* volume_;
};

/// Asks for the face arrays, at the first of eight faces.
template <std::size_t N>
ZYN_INLINE_AVX2 void PrefetchFaces(FaceGroup const& group, double const* const (&arrays)[N], int f) {
  for (double const* array : arrays) __builtin_prefetch(array + f + kFacesAhead);
  __builtin_prefetch(group.cv + f + kFacesAhead);
  __builtin_prefetch(group.other + f + kFacesAhead);
}

/// The slots of the cells of four faces.
struct SlotsOfFour {
  std::size_t cv[4], other[4];

  SlotsOfFour(Slots const& slots, FaceGroup const& group, int f) {
    for (int k = 0; k < 4; ++k) cv[k] = slots.Of(group.cv[f + k]), other[k] = slots.Of(group.other[f + k]);
  }
};

/// The last number of a part of the records, on one side of the four faces.
template <int Fours>
ZYN_INLINE_AVX2 Four LastOf(Table<Fours> const& table, std::size_t const (&slot)[4]) {
  return Of(table.At(slot[0])[3], table.At(slot[1])[3], table.At(slot[2])[3], table.At(slot[3])[3]);
}

alignas(kFour) constexpr double kNothing[4] = {};
/// For Either: of no number, of all.
alignas(kFour) constexpr double kChosen[2][4] = {{}, {-0.0, -0.0, -0.0, -0.0}};

/// The sum of the cell on the CV side, kept in a register while faces of the same cell follow each other.
/// @tparam Irregular  whether a processor cannot foresee where the faces of a cell end. Then there is no branch: the sum is
///                    stored after each face, and a register loaded that is not used if the cell is still the same
template <bool Irregular>
class KeptSum {
 public:
  ZYN_INLINE_AVX2 KeptSum(Table<1> const& sums, std::size_t slot)
      : sums_(sums), slot_(slot), sum_(At(sums.At(slot))) {}

  /// Adds a flux on the CV side and subtracts it on the other.
  ZYN_INLINE_AVX2 void Add(std::size_t cv, std::size_t other, Four flux) {
    MoveTo(cv);
    sum_ = sum_ + flux;
    double* const beyond = sums_.At(other);
    StoreAt(beyond, At(beyond) - flux);
  }
  /// value S of four faces, one after the other.
  ZYN_INLINE_AVX2 void AddFour(SlotsOfFour const& slots, Four value, FaceGroup const& group, int f) {
    Four first = value * At(group.sx + f), second = value * At(group.sy + f),
         third = value * At(group.sz + f), fourth = Same(0.0);
    Transpose(first, second, third, fourth);
    Add(slots.cv[0], slots.other[0], first);
    Add(slots.cv[1], slots.other[1], second);
    Add(slots.cv[2], slots.other[2], third);
    Add(slots.cv[3], slots.other[3], fourth);
  }
  ZYN_INLINE_AVX2 void Store() const { StoreAt(sums_.At(slot_), sum_); }

 private:
  ZYN_INLINE_AVX2 void MoveTo(std::size_t cv) {
    if constexpr (Irregular) {
      // Nothing is loaded from where the sum has just been stored: that would have to wait for the store.
      std::size_t const isSame = cv == slot_ ? 1 : 0;
      double const* from = isSame != 0 ? kNothing : sums_.At(cv);
      asm("" : "+r"(from));  // a conditional move: compilers would go back to the branch
      Store();
      sum_ = Either(At(kChosen[isSame]), sum_, At(from));
    } else {
      if (cv == slot_) return;
      Store();
      sum_ = At(sums_.At(cv));
    }
    slot_ = cv;
  }

  Table<1> const sums_;
  std::size_t slot_;
  Four sum_;
};

/// The sums of one field: x, y, z in the first three numbers of a Four.
class OneFieldSums {
 public:
  using Arrays = face_walk::Flux::Arrays;

  OneFieldSums(FaceRing const& ring, double const* volume, Arrays const& results)
      : slots_(ring), sums_(ring, 0), scale_(ring, volume), results_(results) {}

  Slots const& slots() const { return slots_; }
  Table<1> const& sums() const { return sums_; }

  ZYN_INLINE_AVX2 void LeaveFour(int c, std::size_t slot) const {
    double const* const record = sums_.At(slot);  // side by side: c is a multiple of 4
    Four x = At(record), y = At(record + 4), z = At(record + 8), last = At(record + 12);
    Transpose(x, y, z, last);
    Four const scale = scale_.OfFour(c);
    Store(0, c, x * scale), Store(1, c, y * scale), Store(2, c, z * scale);
  }
  void Leave(int c, std::size_t slot) const {
    double const* const record = sums_.At(slot);
    double const scale = scale_.Of(c);
    for (std::size_t k = 0; k < 3; ++k) results_[k][c] = record[k] * scale;
  }
  /// Any face, of any type, perhaps of a cell with itself.
  template <class FaceValue>
  void Add(FaceGroup const& group, int f, FaceValue const& faceValue) const {
    int const cv = group.cv[f], other = group.other[f];
    face_walk::Flux const flux =
        face_walk::Flux::Of(faceValue(face_walk::OneFace{group, f, cv, other}), group, f);
    Arrays const atCv = SumsAt(slots_.Of(cv));
    face_walk::Flux sum = face_walk::Flux::At(atCv, 0);
    sum += flux;
    sum.StoreAt(atCv, 0);
    if (group.type[f] != 1) flux.SubtractAt(SumsAt(slots_.Of(other)), 0);
  }

 private:
  Arrays SumsAt(std::size_t slot) const {
    double* const record = sums_.At(slot);
    return {record, record + 1, record + 2};
  }
  ZYN_INLINE_AVX2 void Store(std::size_t k, int c, Four result) const {
    __builtin_prefetch(results_[k] + c + kCellsAhead, 1);
    StoreAt(results_[k] + c, result);
  }

  Slots const slots_;
  Table<1> const sums_;
  Scale const scale_;
  Arrays const results_;
};

/// Linear face values of one field. A record is (x, y, z, phi), which the fluxes (x, y, z, 0) leave as it is.
template <>
class LinearRecords<double const*> : public OneFieldSums {
 public:
  static constexpr int kDoubles = 4;
  static constexpr bool kPaysOnSmallMeshes = false;

  LinearRecords(FaceRing const& ring, green_gauss::LimitedLinear<double const*> const& faceValue,
                double const* volume, Arrays const& results)
      : OneFieldSums(ring, volume, results), phi_(faceValue.phi) {}

  ZYN_INLINE_AVX2 void Enter(int c, std::size_t slot) const {
    StoreAt(sums().At(slot), Of(0.0, 0.0, 0.0, phi_[c]));
  }

  template <bool Irregular, class FaceValue>
  [[gnu::noinline]] ZYN_TARGET_AVX2 void AddRange(FaceGroup const& faces, int first, int last,
                                                  FaceValue const& faceValue) const {
    FaceGroup const group = faces;  // stores to the records cannot change copies
    LinearRecords const r = *this;
    KeptSum<Irregular> sum(r.sums(), r.slots().Of(group.cv[first]));
    int f = first;
    for (; f + 3 <= last; f += 4) {
      if ((f - first) % 8 == 0) PrefetchFaces(group, {group.sx, group.sy, group.sz, group.weight}, f);
      SlotsOfFour const at(r.slots(), group, f);
      Four const w = At(group.weight + f), phiCv = LastOf(r.sums(), at.cv),
                 phiOther = LastOf(r.sums(), at.other);
      Four const linear = (Same(1.0) - w) * phiCv + w * phiOther;
      sum.AddFour(at, Median(phiOther, linear, phiCv), group, f);
    }
    sum.Store();
    for (; f <= last; ++f) Add(group, f, faceValue);
  }

 private:
  double const* phi_;
};

/// Face values with a correction for skewness. A record is (x, y, z, -), and in another table the centre and the field
/// (x_c, y_c, z_c, phi) and the gradient of the sweep before (Gx, Gy, Gz, 0).
template <class Corrected>
class CorrectedRecords : public OneFieldSums {
 public:
  static constexpr int kDoubles = 12;
  static constexpr bool kPaysOnSmallMeshes = false;

  CorrectedRecords(FaceRing const& ring, Corrected const& faceValue, double const* volume,
                   Arrays const& results)
      : OneFieldSums(ring, volume, results), inCells_(ring, 1), q_(faceValue) {}

  ZYN_INLINE_AVX2 void Enter(int c, std::size_t slot) const {
    StoreAt(sums().At(slot), Same(0.0));
    StoreAt(inCells_.At(slot), Of(q_.xc[c], q_.yc[c], q_.zc[c], q_.phi[c]));
    StoreAt(inCells_.At(slot, 1), Of(q_.Gx[c], q_.Gy[c], q_.Gz[c], 0.0));
    // More arrays than the processor follows by itself; eight cells share a cache line.
    if (c % 8 == 0)
      for (double const* array : {q_.xc, q_.yc, q_.zc, q_.phi, q_.Gx, q_.Gy, q_.Gz})
        __builtin_prefetch(array + c + kCellsAhead);
  }

  template <bool Irregular, class FaceValue>
  [[gnu::noinline]] ZYN_TARGET_AVX2 void AddRange(FaceGroup const& faces, int first, int last,
                                                  FaceValue const& faceValue) const {
    FaceGroup const group = faces;  // stores to the records cannot change copies
    CorrectedRecords const r = *this;
    KeptSum<Irregular> sum(r.sums(), r.slots().Of(group.cv[first]));
    int f = first;
    for (; f + 3 <= last; f += 4) {
      if ((f - first) % 8 == 0)
        PrefetchFaces(group, {group.sx, group.sy, group.sz, group.xc, group.yc, group.zc, group.weight}, f);
      SlotsOfFour const at(r.slots(), group, f);
      // Face by face: the point of interpolation and, last, the linear value; the gradient there.
      Four x[4], G[4];
      for (int k = 0; k < 4; ++k) {
        Four const w = Same(group.weight[f + k]), wCv = Same(1.0) - w;
        x[k] = w * At(r.inCells_.At(at.other[k])) + wCv * At(r.inCells_.At(at.cv[k]));
        G[k] = w * At(r.inCells_.At(at.other[k], 1)) + wCv * At(r.inCells_.At(at.cv[k], 1));
      }
      // From here on, the four faces side by side.
      Transpose(x[0], x[1], x[2], x[3]);
      Transpose(G[0], G[1], G[2], G[3]);
      Four const linear = x[3];
      Four const v = (At(group.xc + f) - x[0]) * G[0] + linear + (At(group.yc + f) - x[1]) * G[1] +
                     (At(group.zc + f) - x[2]) * G[2];
      sum.AddFour(at, Median(LastOf(r.inCells_, at.other), v, LastOf(r.inCells_, at.cv)), group, f);
    }
    sum.Store();
    for (; f <= last; ++f) Add(group, f, faceValue);
  }

 private:
  Table<2> const inCells_;
  Corrected const q_;
};

/// Linear face values of three fields. A record is the sums along x, (u, v, w, -), those along y and z, and the fields
/// (u, v, w, 0).
template <>
class LinearRecords<face_walk::ThreeFields> {
 public:
  using Arrays = face_walk::ThreeFluxes::Arrays;
  static constexpr int kDoubles = 16;
  static constexpr bool kPaysOnSmallMeshes = true;

  LinearRecords(FaceRing const& ring, green_gauss::LimitedLinear<face_walk::ThreeFields> const& faceValue,
                double const* volume, Arrays const& results)
      : slots_(ring), records_(ring, 0), scale_(ring, volume), results_(results), phi_(faceValue.phi) {}

  ZYN_INLINE_AVX2 void Enter(int c, std::size_t slot) const {
    for (int d = 0; d < 3; ++d) StoreAt(records_.At(slot, d), Same(0.0));
    StoreAt(records_.At(slot, kFields), Of(phi_.u[c], phi_.v[c], phi_.w[c], 0.0));
  }

  template <bool Irregular, class FaceValue>
  [[gnu::noinline]] ZYN_TARGET_AVX2 void AddRange(FaceGroup const& faces, int first, int last,
                                                  FaceValue const&) const {
    FaceGroup const group = faces;  // stores to the records cannot change copies
    LinearRecords const r = *this;
    std::size_t kept = r.slots_.Of(group.cv[first]);
    Four x = At(r.records_.At(kept, 0)), y = At(r.records_.At(kept, 1)), z = At(r.records_.At(kept, 2));
    Four phiCv = At(r.records_.At(kept, kFields));
    for (int f = first; f <= last; ++f) {
      if ((f - first) % 8 == 0) PrefetchFaces(group, {group.sx, group.sy, group.sz, group.weight}, f);
      std::size_t const cv = r.slots_.Of(group.cv[f]), other = r.slots_.Of(group.other[f]);
      if (cv != kept) {
        r.StoreSums(kept, x, y, z);
        kept = cv;
        x = At(r.records_.At(kept, 0)), y = At(r.records_.At(kept, 1)), z = At(r.records_.At(kept, 2));
        phiCv = At(r.records_.At(kept, kFields));
      }
      Four const w = Same(group.weight[f]), phiOther = At(r.records_.At(other, kFields));
      Four const value = Median(phiOther, (Same(1.0) - w) * phiCv + w * phiOther, phiCv);
      Four const fluxX = value * Same(group.sx[f]), fluxY = value * Same(group.sy[f]),
                 fluxZ = value * Same(group.sz[f]);
      x = x + fluxX, y = y + fluxY, z = z + fluxZ;
      r.StoreSums(other, At(r.records_.At(other, 0)) - fluxX, At(r.records_.At(other, 1)) - fluxY,
                  At(r.records_.At(other, 2)) - fluxZ);
    }
    r.StoreSums(kept, x, y, z);
  }

  /// Any face, of any type, perhaps of a cell with itself.
  template <class FaceValue>
  void Add(FaceGroup const& group, int f, FaceValue const& faceValue) const {
    using face_walk::ThreeFluxes;
    int const cv = group.cv[f], other = group.other[f];
    ThreeFluxes const flux = ThreeFluxes::Of(faceValue(face_walk::OneFace{group, f, cv, other}), group, f);
    Arrays const atCv = SumsAt(slots_.Of(cv));
    ThreeFluxes sum = ThreeFluxes::At(atCv, 0);
    sum += flux;
    sum.StoreAt(atCv, 0);
    if (group.type[f] != 1) flux.SubtractAt(SumsAt(slots_.Of(other)), 0);
  }

  ZYN_INLINE_AVX2 void LeaveFour(int c, std::size_t slot) const {
    Four const scale = scale_.OfFour(c);
    for (int d = 0; d < 3; ++d) {
      double const* const record = records_.At(slot, d);  // side by side: c is a multiple of 4
      Four u = At(record), v = At(record + 16), w = At(record + 32), last = At(record + 48);
      Transpose(u, v, w, last);
      std::size_t const k = static_cast<std::size_t>(d);
      Store(k, c, u * scale), Store(3 + k, c, v * scale), Store(6 + k, c, w * scale);
    }
  }
  void Leave(int c, std::size_t slot) const {
    Arrays const sums = SumsAt(slot);
    double const scale = scale_.Of(c);
    for (std::size_t k = 0; k < results_.size(); ++k) results_[k][c] = sums[k][0] * scale;
  }

 private:
  static constexpr int kFields = 3;

  /// Places of the nine sums, ordered as in the results.
  Arrays SumsAt(std::size_t slot) const {
    double *const x = records_.At(slot, 0), *const y = records_.At(slot, 1), *const z = records_.At(slot, 2);
    return {x, y, z, x + 1, y + 1, z + 1, x + 2, y + 2, z + 2};
  }
  ZYN_INLINE_AVX2 void StoreSums(std::size_t slot, Four x, Four y, Four z) const {
    StoreAt(records_.At(slot, 0), x), StoreAt(records_.At(slot, 1), y), StoreAt(records_.At(slot, 2), z);
  }
  ZYN_INLINE_AVX2 void Store(std::size_t k, int c, Four result) const {
    __builtin_prefetch(results_[k] + c + kCellsAhead, 1);
    StoreAt(results_[k] + c, result);
  }

  Slots const slots_;
  Table<4> const records_;
  Scale const scale_;
  Arrays const results_;
  face_walk::ThreeFields const phi_;
};

}  // namespace ring_walk

#endif
