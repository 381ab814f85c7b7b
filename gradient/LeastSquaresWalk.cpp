#include "gradient/LeastSquaresWalk.h"

#include <algorithm>
#include <cstdint>

#include "foundation/Processor.h"
#include "gradient/FourDoubles.h"
#include "gradient/FourSystems.h"

namespace walk_kernels {
namespace {

using normal_equations::Systems;

/// The place of a cell in the ring. In doubles:
///
///   one field      x y z phi | bx by bz .
///   three fields   x y z z   | u v w w  | bx of u, v, w, . | by | bz
///
/// A lane that holds no number of its own repeats its neighbour's, so that it raises no floating-point exception of its own.
template <int FieldCount>
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
template <int FieldCount>
struct Ring {
  double* records;
  unsigned mask;

  double* operator[](int c) const {
    constexpr unsigned kSize = Record<FieldCount>::kSize;
    // One instruction less where the size allows it: the loop over faces is nothing but such.
    if constexpr ((kSize & (kSize - 1)) == 0)
      return records + ((static_cast<unsigned>(c) * kSize) & (mask * kSize));
    else
      return records + (static_cast<unsigned>(c) & mask) * kSize;
  }
};

template <int FieldCount>
void EnterCell(Ring<FieldCount> ring, CZYN3DFiniteVolumeMesh const& mesh,
               std::array<double const*, FieldCount> const& phi, int c) {
  using R = Record<FieldCount>;
  double* const record = ring[c];
  std::fill(record, record + R::kSize, 0.0);
  record[0] = mesh.xc[c], record[1] = mesh.yc[c], record[2] = mesh.zc[c];
  for (int k = 0; k < FieldCount; ++k) record[R::Value(k)] = phi[static_cast<std::size_t>(k)][c];
  if (FieldCount > 1) record[3] = mesh.zc[c], record[R::Value(FieldCount)] = phi.back()[c];
}

template <int FieldCount>
void LeaveCell(Ring<FieldCount> ring, Systems<FieldCount> const& systems, int c) {
  using R = Record<FieldCount>;
  double const* const record = ring[c];
  for (int k = 0; k < FieldCount; ++k) {
    normal_equations::Vectors const& b = systems.fields[static_cast<std::size_t>(k)].b;
    b.x[c] = record[R::Sum(0, k)], b.y[c] = record[R::Sum(1, k)], b.z[c] = record[R::Sum(2, k)];
  }
}

/// Prefetches what is read of a cell that enters or leaves. (Inlined: a compiler drops calls that only prefetch.)
[[gnu::always_inline]] inline void AskForMatrices(normal_equations::Matrices const& m, int c) {
  for (double const* array : {m.xx, m.yy, m.zz, m.xy, m.xz, m.yz}) __builtin_prefetch(array + c);
}
template <int FieldCount>
[[gnu::always_inline]] inline void AskForCell(CZYN3DFiniteVolumeMesh const& mesh,
                                              std::array<double const*, FieldCount> const& phi, int c) {
  for (double const* array : {mesh.xc, mesh.yc, mesh.zc}) __builtin_prefetch(array + c);
  for (double const* array : phi) __builtin_prefetch(array + c);
}

#if ZYN_HAS_TARGETS

using four_doubles::Four;
using four_doubles::Transpose;
using normal_equations::FourSystems;

/// Four cells c..c+3 of four arrays to their records, from the place `record` of the first on.
template <std::size_t Size>
ZYN_INLINE_AVX2 void ToRecords(double* record, double const* p, double const* q, double const* r,
                               double const* s, int c) {
  Four a = _mm256_loadu_pd(p + c), b = _mm256_loadu_pd(q + c);
  Four d = _mm256_loadu_pd(r + c), e = _mm256_loadu_pd(s + c);
  Transpose(a, b, d, e);
  _mm256_store_pd(record, a);
  _mm256_store_pd(record + Size, b);
  _mm256_store_pd(record + 2 * Size, d);
  _mm256_store_pd(record + 3 * Size, e);
}

/// The first three of the four numbers in each of four records.
template <std::size_t Size>
ZYN_INLINE_AVX2 void FromRecords(double const* record, Four& p, Four& q, Four& r) {
  p = _mm256_load_pd(record), q = _mm256_load_pd(record + Size), r = _mm256_load_pd(record + 2 * Size);
  Four s = _mm256_load_pd(record + 3 * Size);
  Transpose(p, q, r, s);
}

/// The cells c..c+3 enter.
ZYN_INLINE_AVX2 void EnterGroup(Ring<1> const& ring, double const* x, double const* y, double const* z,
                                std::array<double const*, 1> const& phi, int c) {
  constexpr std::size_t kSize = Record<1>::kSize;
  double* const record = ring[c];
  ToRecords<kSize>(record, x, y, z, phi[0], c);
  for (std::size_t k = 0; k < 4; ++k) _mm256_store_pd(record + k * kSize + 4, _mm256_setzero_pd());
}
ZYN_INLINE_AVX2 void EnterGroup(Ring<3> const& ring, double const* x, double const* y, double const* z,
                                std::array<double const*, 3> const& phi, int c) {
  constexpr std::size_t kSize = Record<3>::kSize;
  double* const record = ring[c];
  ToRecords<kSize>(record, x, y, z, z, c);
  ToRecords<kSize>(record + 4, phi[0], phi[1], phi[2], phi[2], c);
  for (std::size_t k = 0; k < 4; ++k)
    for (std::size_t i = 8; i < kSize; i += 4) _mm256_store_pd(record + k * kSize + i, _mm256_setzero_pd());
}

/// The right-hand sides of the cells c..c+3, by field and direction.
ZYN_INLINE_AVX2 void RightHandSides(Ring<1> const& ring, int c, Four (&b)[1][3]) {
  FromRecords<Record<1>::kSize>(ring[c] + 4, b[0][0], b[0][1], b[0][2]);
}
ZYN_INLINE_AVX2 void RightHandSides(Ring<3> const& ring, int c, Four (&b)[3][3]) {
  for (std::size_t i = 0; i < 3; ++i)
    FromRecords<Record<3>::kSize>(ring[c] + 8 + 4 * i, b[0][i], b[1][i], b[2][i]);
}

ZYN_INLINE_AVX2 void AddAt(double* sum, Four product) {
  _mm256_store_pd(sum, _mm256_add_pd(_mm256_load_pd(sum), product));
}

/// dphi times dx, dy, dz, dz. @param d  dx, dy, dz, dphi
ZYN_INLINE_AVX2 Four Product(Four d) {
  return _mm256_mul_pd(_mm256_permute4x64_pd(d, 0xff), _mm256_shuffle_pd(d, d, 0x2));
}

/// b += dphi d on both sides of a face, first on the CV side: the two may be one cell.
ZYN_INLINE_AVX2 void AddFace(Ring<1> const& ring, int cvCell, int otherCell) {
  double *const cv = ring[cvCell], *const other = ring[otherCell];
  Four const product = Product(_mm256_sub_pd(_mm256_load_pd(other), _mm256_load_pd(cv)));
  AddAt(cv + 4, product);
  AddAt(other + 4, product);
}
ZYN_INLINE_AVX2 void AddFace(Ring<3> const& ring, int cvCell, int otherCell) {
  double *const cv = ring[cvCell], *const other = ring[otherCell];
  Four const d = _mm256_sub_pd(_mm256_load_pd(other), _mm256_load_pd(cv));             // dx dy dz dz
  Four const dphi = _mm256_sub_pd(_mm256_load_pd(other + 4), _mm256_load_pd(cv + 4));  // du dv dw dw
  Four const x = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0x00));
  Four const y = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0x55));
  Four const z = _mm256_mul_pd(dphi, _mm256_permute4x64_pd(d, 0xaa));
  AddAt(cv + 8, x), AddAt(cv + 12, y), AddAt(cv + 16, z);
  AddAt(other + 8, x), AddAt(other + 12, y), AddAt(other + 16, z);
}

template <int FieldCount>
ZYN_TARGET_AVX2 void EnterGroups(Ring<FieldCount> ring, double const* x, double const* y, double const* z,
                                 std::array<double const*, FieldCount> const& phi, int first, int last) {
  for (int c = first; c < last; c += WalkSchedule::kGroup) EnterGroup(ring, x, y, z, phi, c);
}

/// Groups leave: their right-hand sides are stored and, with Solves, their systems solved.
/// @return the first cell that has not left: after the last group, or of one that has left unsolved for a zero pivot
template <int FieldCount, bool Solves>
ZYN_TARGET_AVX2 int LeaveGroups(Ring<FieldCount> ring, Systems<FieldCount> const& systems, int c, int last) {
  Systems<FieldCount> const s = systems;
  constexpr bool kSameArrays = FieldCount > 1;
  for (; c < last; c += WalkSchedule::kGroup) {
    Four b[FieldCount][3];
    RightHandSides(ring, c, b);
    FourSystems eliminated;
    bool const isSolved = Solves && Eliminate(s.matrices, c, eliminated);
    for (int k = 0; k < FieldCount; ++k) {
      normal_equations::Solution const& field = s.fields[static_cast<std::size_t>(k)];
      if (!isSolved || !kSameArrays) {
        _mm256_storeu_pd(field.b.x + c, b[k][0]);
        _mm256_storeu_pd(field.b.y + c, b[k][1]);
        _mm256_storeu_pd(field.b.z + c, b[k][2]);
      }
      if (isSolved) SolveFour(eliminated, b[k][0], b[k][1], b[k][2], field.g, c);
    }
    if (Solves && !isSolved) break;
  }
  return c;
}

/// b += dphi d on the CV side alone; the other cell has no record.
ZYN_INLINE_AVX2 void AddOuterFace(Ring<1> const& ring, CZYN3DFiniteVolumeMesh const& mesh,
                                  std::array<double const*, 1> const& phi, int cvCell, int other) {
  double* const cv = ring[cvCell];
  Four const there = _mm256_setr_pd(mesh.xc[other], mesh.yc[other], mesh.zc[other], phi[0][other]);
  AddAt(cv + 4, Product(_mm256_sub_pd(there, _mm256_load_pd(cv))));
}
ZYN_INLINE_AVX2 void AddOuterFace(Ring<3> const& ring, CZYN3DFiniteVolumeMesh const& mesh,
                                  std::array<double const*, 3> const& phi, int cvCell, int other) {
  double* const cv = ring[cvCell];
  Four const there = _mm256_setr_pd(phi[0][other], phi[1][other], phi[2][other], phi[2][other]);
  Four const dphi = _mm256_sub_pd(there, _mm256_load_pd(cv + 4));
  AddAt(cv + 8, _mm256_mul_pd(dphi, _mm256_set1_pd(mesh.xc[other] - cv[0])));
  AddAt(cv + 12, _mm256_mul_pd(dphi, _mm256_set1_pd(mesh.yc[other] - cv[1])));
  AddAt(cv + 16, _mm256_mul_pd(dphi, _mm256_set1_pd(mesh.zc[other] - cv[2])));
}

/// The outer faces from `face` on whose cells are to leave. @return the next one
template <int FieldCount>
ZYN_TARGET_AVX2 std::size_t AddOuterFaces(Ring<FieldCount> ring, CZYN3DFiniteVolumeMesh const& mesh,
                                          std::array<double const*, FieldCount> const& phi,
                                          std::vector<WalkSchedule::OuterFace> const& faces, std::size_t face,
                                          int lastCell) {
  constexpr std::size_t kAhead = 12;
  for (; face < faces.size() && faces[face].cv <= lastCell; ++face) {
    AskForCell<FieldCount>(mesh, phi, faces[std::min(face + kAhead, faces.size() - 1)].other);
    AddOuterFace(ring, mesh, phi, faces[face].cv, faces[face].other);
  }
  return face;
}

template <int FieldCount>
ZYN_TARGET_AVX2 void AddFaces(Ring<FieldCount> ring, FaceGroup const& group, int first, int last) {
  int const *const cv = group.cv, *const other = group.other;
  for (int f = first; f <= last; ++f) AddFace(ring, cv[f], other[f]);
}

#else  // no plan serves, and nobody walks

template <int FieldCount>
void EnterGroups(Ring<FieldCount>, double const*, double const*, double const*,
                 std::array<double const*, FieldCount> const&, int, int) {}
template <int FieldCount, bool Solves>
int LeaveGroups(Ring<FieldCount>, Systems<FieldCount> const&, int c, int) {
  return c;
}
template <int FieldCount>
void AddFaces(Ring<FieldCount>, FaceGroup const&, int, int) {}
template <int FieldCount>
std::size_t AddOuterFaces(Ring<FieldCount>, CZYN3DFiniteVolumeMesh const&,
                          std::array<double const*, FieldCount> const&,
                          std::vector<WalkSchedule::OuterFace> const&, std::size_t face, int) {
  return face;
}

#endif

/// The first cell from c on that begins a group.
int GroupFrom(int c) { return (c + WalkSchedule::kGroup - 1) / WalkSchedule::kGroup * WalkSchedule::kGroup; }
/// The last cell up to c that ends one.
int GroupUpTo(int c) { return (c + 1) / WalkSchedule::kGroup * WalkSchedule::kGroup - 1; }

}  // namespace
}  // namespace walk_kernels

LeastSquaresPlan::LeastSquaresPlan(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces)
    : schedule_(mesh, faces) {
  std::size_t n = 2 * WalkSchedule::kRange;
  while (n < static_cast<std::size_t>(schedule_.nUnderWay)) n *= 2;
  if (n > walk_kernels::kMostRecords) return;
  nRecords_ = n;
  memory_ = std::make_unique<double[]>(n * walk_kernels::Record<3>::kSize + walk_kernels::kLine);
  auto const address = reinterpret_cast<std::uintptr_t>(memory_.get());
  constexpr std::uintptr_t kLineBytes = walk_kernels::kLine * sizeof(double);
  records_ = memory_.get() + (kLineBytes - address % kLineBytes) % kLineBytes / sizeof(double);
}

bool LeastSquaresPlan::Serves(CZYN3DFiniteVolumeMesh const& mesh, FaceGroups const& faces) const {
  return nRecords_ > 0 && processor::HasAvx2() && schedule_.Fits(mesh, faces);
}

template <int FieldCount>
LeastSquaresWalk<FieldCount>::LeastSquaresWalk(LeastSquaresPlan const& plan,
                                               CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& inner,
                                               Fields const& phi, Systems const& systems)
    : schedule_(plan.schedule()),
      mesh_(mesh),
      inner_(inner),
      phi_(phi),
      systems_(systems),
      records_(plan.records()),
      mask_(plan.mask()),
      isLarge_(mesh.NCell > walk_kernels::kLargeMesh) {}

template <int FieldCount>
int LeastSquaresWalk<FieldCount>::SolveAll() {
  for (std::size_t range = 0; range < schedule_.ranges.size(); ++range) {
    Enter(schedule_.ranges[range].entered);
    AddRange(range);
    Leave(schedule_.ranges[range].done);
  }
  while (left_ < schedule_.nCells) {  // all inner faces have passed
    Enter(std::min(walk_kernels::GroupUpTo(left_ + WalkSchedule::kRange), schedule_.nCells));
    Leave(entered_);
  }
  return unsolved_;
}

template <int FieldCount>
void LeastSquaresWalk<FieldCount>::Enter(int last) {
  using namespace walk_kernels;
  Ring<FieldCount> const ring{records_, mask_};
  int c = entered_ + 1;
  for (; c <= last && c < GroupFrom(entered_ + 1); ++c) EnterCell<FieldCount>(ring, mesh_, phi_, c);
  if (c < GroupUpTo(last)) {
    EnterGroups<FieldCount>(ring, mesh_.xc, mesh_.yc, mesh_.zc, phi_, c, GroupUpTo(last));
    c = GroupUpTo(last) + 1;
  }
  for (; c <= last; ++c) EnterCell<FieldCount>(ring, mesh_, phi_, c);
  entered_ = std::max(entered_, last);
}

/// Adds a range of inner faces. On a large mesh, what is read of the cells that enter or leave next is asked for meanwhile,
/// a cache line of each array at a time.
template <int FieldCount>
void LeastSquaresWalk<FieldCount>::AddRange(std::size_t range) {
  using namespace walk_kernels;
  Ring<FieldCount> const ring{records_, mask_};
  int const first = static_cast<int>(range) * WalkSchedule::kRange + 1;
  int const last = std::min(first + WalkSchedule::kRange - 1, inner_.count);
  if (!isLarge_) {
    AddFaces<FieldCount>(ring, inner_, first, last);
    return;
  }
  constexpr int kFacesALine = 16, kCells = static_cast<int>(kLine);
  std::size_t const next = std::min(range + 1, schedule_.ranges.size() - 1);
  int enter = entered_ + 1, leave = left_ + 1;
  for (int f = first; f <= last; f += kFacesALine) {
    AddFaces<FieldCount>(ring, inner_, f, std::min(f + kFacesALine - 1, last));
    if (leave <= schedule_.ranges[range].done) AskForMatrices(systems_.matrices, leave);
    if (enter <= schedule_.ranges[next].entered) AskForCell<FieldCount>(mesh_, phi_, enter);
    leave += kCells, enter += kCells;
  }
}

/// The cells up to `last` are complete once their outer faces have been added.
template <int FieldCount>
void LeastSquaresWalk<FieldCount>::Leave(int last) {
  using namespace walk_kernels;
  Ring<FieldCount> const ring{records_, mask_};
  outerFace_ = AddOuterFaces<FieldCount>(ring, mesh_, phi_, schedule_.outerFaces, outerFace_, last);
  while (left_ < last) {
    int const first = left_ + 1;
    bool const solves = unsolved_ == first && first <= mesh_.NInnerCells;
    int const end = GroupUpTo(solves ? std::min(last, mesh_.NInnerCells) : last);
    if (first == GroupFrom(first) && first < end) {
      int const next = solves ? LeaveGroups<FieldCount, true>(ring, systems_, first, end)
                              : LeaveGroups<FieldCount, false>(ring, systems_, first, end);
      if (solves) unsolved_ = next;
      left_ = next - 1;
      if (left_ == end) continue;
      // A group has left in which a pivot is zero.
      left_ += WalkSchedule::kGroup;
    } else {
      LeaveCell<FieldCount>(ring, systems_, first);
      left_ = first;
    }
    if (solves) unsolved_ = SolveCells(systems_, unsolved_, left_);
  }
}

template class LeastSquaresWalk<1>;
template class LeastSquaresWalk<3>;
