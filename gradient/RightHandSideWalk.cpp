#include "gradient/RightHandSideWalk.h"

#include <algorithm>
#include <cstdint>

#include "foundation/Processor.h"
#if ZYN_HAS_TARGETS
#include <immintrin.h>
#endif

namespace ring_kernels {
namespace {

/// The place of a cell in the ring. In doubles:
///
///   one field      x y z phi | bx by bz .
///   three fields   x y z z   | u v w w  | bx of u, v, w, . | by | bz
///
/// A lane that holds no number of its own repeats its neighbour's, so that it raises no floating-point exception of its own.
template <int kFields>
struct Record;
template <>
struct Record<1> {
  static constexpr std::size_t kSize = 8;
  static constexpr int Value(int) { return 3; }
  static constexpr int Sum(int direction, int) { return 4 + direction; }
};
template <>
struct Record<3> {
  static constexpr std::size_t kSize = 20;
  static constexpr int Value(int field) { return 4 + field; }
  static constexpr int Sum(int direction, int field) { return 8 + 4 * direction + field; }
};

/// The ring is at most this many cells, whose records fit into the second or third level of a cache.
constexpr std::size_t kMostRecords = std::size_t{1} << 15;
constexpr std::size_t kLine = 8;  // doubles in a cache line
/// With fewer cells, everything is in cache anyhow.
constexpr int kLargeMesh = 1 << 15;

/// The ring as the kernels see it.
template <int kFields>
struct Ring {
  double* records;
  std::size_t mask;

  double* operator[](int c) const {
    return records + (static_cast<std::size_t>(c) & mask) * Record<kFields>::kSize;
  }
};

template <int kFields>
void EnterCell(Ring<kFields> ring, double const* x, double const* y, double const* z,
               std::array<double const*, kFields> const& phi, int c) {
  using R = Record<kFields>;
  double* const record = ring[c];
  std::fill(record, record + R::kSize, 0.0);
  record[0] = x[c], record[1] = y[c], record[2] = z[c];
  for (int k = 0; k < kFields; ++k) record[R::Value(k)] = phi[static_cast<std::size_t>(k)][c];
  if (kFields > 1) record[3] = z[c], record[R::Value(kFields)] = phi.back()[c];
}

template <int kFields>
void LeaveCell(Ring<kFields> ring, std::array<double*, 3 * kFields> const& b, int c) {
  for (int i = 0; i < 3 * kFields; ++i)
    b[static_cast<std::size_t>(i)][c] = ring[c][Record<kFields>::Sum(i % 3, i / 3)];
}

#if ZYN_HAS_TARGETS

using Four = __m256d;

#define ZYN_KERNEL [[gnu::always_inline]] ZYN_TARGET_AVX2 inline

/// Rows become columns.
ZYN_KERNEL void Transpose(Four& a, Four& b, Four& c, Four& d) {
  Four const ab0 = _mm256_unpacklo_pd(a, b), ab1 = _mm256_unpackhi_pd(a, b);
  Four const cd0 = _mm256_unpacklo_pd(c, d), cd1 = _mm256_unpackhi_pd(c, d);
  a = _mm256_permute2f128_pd(ab0, cd0, 0x20);
  b = _mm256_permute2f128_pd(ab1, cd1, 0x20);
  c = _mm256_permute2f128_pd(ab0, cd0, 0x31);
  d = _mm256_permute2f128_pd(ab1, cd1, 0x31);
}

/// Four cells c..c+3 of four arrays to the place `at` of their records.
template <std::size_t kSize>
ZYN_KERNEL void ToRecords(double* record, double const* p, double const* q, double const* r, double const* s,
                          int c) {
  Four a = _mm256_loadu_pd(p + c), b = _mm256_loadu_pd(q + c);
  Four d = _mm256_loadu_pd(r + c), e = _mm256_loadu_pd(s + c);
  Transpose(a, b, d, e);
  _mm256_store_pd(record, a);
  _mm256_store_pd(record + kSize, b);
  _mm256_store_pd(record + 2 * kSize, d);
  _mm256_store_pd(record + 3 * kSize, e);
}

/// The first three of the four numbers in each of four records to three arrays.
template <std::size_t kSize>
ZYN_KERNEL void FromRecords(double const* record, double* p, double* q, double* r, int c) {
  Four a = _mm256_load_pd(record), b = _mm256_load_pd(record + kSize);
  Four d = _mm256_load_pd(record + 2 * kSize), e = _mm256_load_pd(record + 3 * kSize);
  Transpose(a, b, d, e);
  _mm256_storeu_pd(p + c, a);
  _mm256_storeu_pd(q + c, b);
  _mm256_storeu_pd(r + c, d);
}

/// The cells c..c+3 enter.
ZYN_KERNEL void EnterGroup(Ring<1> const& ring, double const* x, double const* y, double const* z,
                           std::array<double const*, 1> const& phi, int c) {
  constexpr std::size_t kSize = Record<1>::kSize;
  double* const record = ring[c];
  ToRecords<kSize>(record, x, y, z, phi[0], c);
  for (std::size_t k = 0; k < 4; ++k) _mm256_store_pd(record + k * kSize + 4, _mm256_setzero_pd());
}
ZYN_KERNEL void EnterGroup(Ring<3> const& ring, double const* x, double const* y, double const* z,
                           std::array<double const*, 3> const& phi, int c) {
  constexpr std::size_t kSize = Record<3>::kSize;
  double* const record = ring[c];
  ToRecords<kSize>(record, x, y, z, z, c);
  ToRecords<kSize>(record + 4, phi[0], phi[1], phi[2], phi[2], c);
  for (std::size_t k = 0; k < 4; ++k)
    for (std::size_t i = 8; i < kSize; i += 4) _mm256_store_pd(record + k * kSize + i, _mm256_setzero_pd());
}

/// The right-hand sides of the cells c..c+3 are stored.
ZYN_KERNEL void LeaveGroup(Ring<1> const& ring, std::array<double*, 3> const& b, int c) {
  FromRecords<Record<1>::kSize>(ring[c] + 4, b[0], b[1], b[2], c);
}
ZYN_KERNEL void LeaveGroup(Ring<3> const& ring, std::array<double*, 9> const& b, int c) {
  double const* const record = ring[c];
  FromRecords<Record<3>::kSize>(record + 8, b[0], b[3], b[6], c);
  FromRecords<Record<3>::kSize>(record + 12, b[1], b[4], b[7], c);
  FromRecords<Record<3>::kSize>(record + 16, b[2], b[5], b[8], c);
}

ZYN_KERNEL void AddAt(double* sum, Four product) {
  _mm256_store_pd(sum, _mm256_add_pd(_mm256_load_pd(sum), product));
}

/// b += dphi d on both sides of a face, first on the CV side: the two may be one cell.
ZYN_KERNEL void AddFace(Ring<1> const& ring, int cvCell, int otherCell) {
  double *const cv = ring[cvCell], *const other = ring[otherCell];
  Four const d = _mm256_sub_pd(_mm256_load_pd(other), _mm256_load_pd(cv));  // dx dy dz dphi
  Four const dphi = _mm256_permute4x64_pd(d, 0xff);                         // in all lanes
  Four const product = _mm256_mul_pd(dphi, _mm256_shuffle_pd(d, d, 0x2));   // dphi times dx dy dz dz
  AddAt(cv + 4, product);
  AddAt(other + 4, product);
}
ZYN_KERNEL void AddFace(Ring<3> const& ring, int cvCell, int otherCell) {
  double *const cv = ring[cvCell], *const other = ring[otherCell];
  Four const d = _mm256_sub_pd(_mm256_load_pd(other), _mm256_load_pd(cv));             // dx dy dz dz
  Four const dphi = _mm256_sub_pd(_mm256_load_pd(other + 4), _mm256_load_pd(cv + 4));  // du dv dw dw
  Four const x = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0x00));
  Four const y = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0x55));
  Four const z = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0xaa));
  AddAt(cv + 8, x), AddAt(cv + 12, y), AddAt(cv + 16, z);
  AddAt(other + 8, x), AddAt(other + 12, y), AddAt(other + 16, z);
}

template <int kFields>
ZYN_TARGET_AVX2 void EnterGroups(Ring<kFields> ring, double const* x, double const* y, double const* z,
                                 std::array<double const*, kFields> const& phi, int first, int last) {
  for (int c = first; c < last; c += WalkSchedule::kGroup) EnterGroup(ring, x, y, z, phi, c);
}

template <int kFields>
ZYN_TARGET_AVX2 void LeaveGroups(Ring<kFields> ring, std::array<double*, 3 * kFields> const& b, int first,
                                 int last) {
  for (int c = first; c < last; c += WalkSchedule::kGroup) LeaveGroup(ring, b, c);
}

template <int kFields>
ZYN_TARGET_AVX2 void AddFaces(Ring<kFields> ring, FaceGroup const& group, int first, int last) {
  int const *const cv = group.cv, *const other = group.other;
  for (int f = first; f <= last; ++f) AddFace(ring, cv[f], other[f]);
}

#undef ZYN_KERNEL

#else  // no plan serves, and nobody walks

template <int kFields>
void EnterGroups(Ring<kFields>, double const*, double const*, double const*,
                 std::array<double const*, kFields> const&, int, int) {}
template <int kFields>
void LeaveGroups(Ring<kFields>, std::array<double*, 3 * kFields> const&, int, int) {}
template <int kFields>
void AddFaces(Ring<kFields>, FaceGroup const&, int, int) {}

#endif

/// The first cell from c on that begins a group.
int GroupFrom(int c) { return (c + WalkSchedule::kGroup - 1) / WalkSchedule::kGroup * WalkSchedule::kGroup; }
/// The last cell up to c that ends one.
int GroupUpTo(int c) { return (c + 1) / WalkSchedule::kGroup * WalkSchedule::kGroup - 1; }

template <std::size_t n>
void AskFor(std::array<double const*, n> const& arrays, int c) {
  for (double const* array : arrays) __builtin_prefetch(array + c);
}

}  // namespace
}  // namespace ring_kernels

RightHandSidePlan::RightHandSidePlan(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces)
    : schedule_(mesh, faces) {
  std::size_t n = 2 * WalkSchedule::kRange;
  while (n < static_cast<std::size_t>(schedule_.nUnderWay)) n *= 2;
  if (n > ring_kernels::kMostRecords) return;
  nRecords_ = n;
  memory_ = std::make_unique<double[]>(n * ring_kernels::Record<3>::kSize + ring_kernels::kLine);
  auto const address = reinterpret_cast<std::uintptr_t>(memory_.get());
  constexpr std::uintptr_t kLineBytes = ring_kernels::kLine * sizeof(double);
  records_ = memory_.get() + (kLineBytes - address % kLineBytes) % kLineBytes / sizeof(double);
}

bool RightHandSidePlan::Serves(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const {
  return nRecords_ > 0 && processor::HasAvx2() && schedule_.Fits(mesh, faces);
}

template <int kFields>
RightHandSideWalk<kFields>::RightHandSideWalk(RightHandSidePlan const& plan,
                                              CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& inner,
                                              Fields const& phi, Sums const& b, ReadBeside const& readBeside)
    : schedule_(plan.schedule()),
      xc_(mesh.xc),
      yc_(mesh.yc),
      zc_(mesh.zc),
      inner_(inner),
      phi_(phi),
      b_(b),
      readBeside_(readBeside),
      records_(plan.records()),
      mask_(plan.mask()),
      isLarge_(mesh.NCell > ring_kernels::kLargeMesh) {}

template <int kFields>
bool RightHandSideWalk<kFields>::Next() {
  int const before = last_;
  while (range_ < schedule_.ranges.size() && last_ == before) {
    WalkSchedule::Range const& range = schedule_.ranges[range_];
    Enter(range.entered);
    int const first = static_cast<int>(range_) * WalkSchedule::kRange + 1;
    AddRange(first, std::min(first + WalkSchedule::kRange - 1, inner_.count), range);
    Leave(range.done);
    ++range_;
  }
  if (last_ == before) {  // all inner faces are done: further cells enter and are complete
    Enter(std::min(ring_kernels::GroupUpTo(last_ + WalkSchedule::kRange), schedule_.nCells));
    Leave(entered_);
  }
  first_ = before + 1;
  return last_ > before;
}

template <int kFields>
void RightHandSideWalk<kFields>::Enter(int last) {
  if (last <= entered_) return;
  ring_kernels::Ring<kFields> const ring{records_, mask_};
  int c = entered_ + 1;
  for (; c <= last && c < ring_kernels::GroupFrom(entered_ + 1); ++c)
    ring_kernels::EnterCell<kFields>(ring, xc_, yc_, zc_, phi_, c);
  if (c < ring_kernels::GroupUpTo(last)) {
    ring_kernels::EnterGroups<kFields>(ring, xc_, yc_, zc_, phi_, c, ring_kernels::GroupUpTo(last));
    c = ring_kernels::GroupUpTo(last) + 1;
  }
  for (; c <= last; ++c) ring_kernels::EnterCell<kFields>(ring, xc_, yc_, zc_, phi_, c);
  entered_ = last;
}

/// Adds a range of inner faces. On a large mesh, the cells that are entered next and those that are left next are asked
/// for meanwhile, a cache line of each array at a time.
template <int kFields>
void RightHandSideWalk<kFields>::AddRange(int first, int last, WalkSchedule::Range const& range) {
  ring_kernels::Ring<kFields> const ring{records_, mask_};
  if (!isLarge_) {
    ring_kernels::AddFaces<kFields>(ring, inner_, first, last);
    return;
  }
  constexpr int kFacesALine = 16, kCells = static_cast<int>(ring_kernels::kLine);
  int const entersNext =
      range_ + 1 < schedule_.ranges.size() ? schedule_.ranges[range_ + 1].entered : schedule_.nCells;
  int enter = entered_ + 1, leave = last_ + 1;
  for (int f = first; f <= last; f += kFacesALine) {
    ring_kernels::AddFaces<kFields>(ring, inner_, f, std::min(f + kFacesALine - 1, last));
    if (leave <= range.done) ring_kernels::AskFor(readBeside_, leave);
    if (enter <= entersNext) {
      ring_kernels::AskFor(phi_, enter);
      ring_kernels::AskFor(std::array<double const*, 3>{xc_, yc_, zc_}, enter);
    }
    leave += kCells, enter += kCells;
  }
}

/// Adds the outer faces of the cells up to `last` and stores what is then complete.
template <int kFields>
void RightHandSideWalk<kFields>::Leave(int last) {
  if (last <= last_) return;
  ring_kernels::Ring<kFields> const ring{records_, mask_};
  constexpr std::size_t kFacesAhead = 12;
  std::size_t const nOuterFaces = schedule_.outerFaces.size();
  for (; outerFace_ < nOuterFaces && schedule_.outerFaces[outerFace_].cv <= last; ++outerFace_) {
    if (outerFace_ + kFacesAhead < nOuterFaces) {
      int const ahead = schedule_.outerFaces[outerFace_ + kFacesAhead].other;
      ring_kernels::AskFor(phi_, ahead);
      ring_kernels::AskFor(std::array<double const*, 3>{xc_, yc_, zc_}, ahead);
    }
    auto const [cv, other] = schedule_.outerFaces[outerFace_];
    double* const record = ring[cv];
    double const dx = xc_[other] - record[0], dy = yc_[other] - record[1], dz = zc_[other] - record[2];
    for (int k = 0; k < kFields; ++k) {
      double const dphi =
          phi_[static_cast<std::size_t>(k)][other] - record[ring_kernels::Record<kFields>::Value(k)];
      record[ring_kernels::Record<kFields>::Sum(0, k)] += dphi * dx;
      record[ring_kernels::Record<kFields>::Sum(1, k)] += dphi * dy;
      record[ring_kernels::Record<kFields>::Sum(2, k)] += dphi * dz;
    }
  }

  int c = last_ + 1;
  for (; c <= last && c < ring_kernels::GroupFrom(last_ + 1); ++c)
    ring_kernels::LeaveCell<kFields>(ring, b_, c);
  if (c < ring_kernels::GroupUpTo(last)) {
    ring_kernels::LeaveGroups<kFields>(ring, b_, c, ring_kernels::GroupUpTo(last));
    c = ring_kernels::GroupUpTo(last) + 1;
  }
  for (; c <= last; ++c) ring_kernels::LeaveCell<kFields>(ring, b_, c);
  last_ = last;
}

template class RightHandSideWalk<1>;
template class RightHandSideWalk<3>;
