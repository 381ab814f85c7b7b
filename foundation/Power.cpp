#include "foundation/Power.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "foundation/Processor.h"
#include "foundation/TwoDoubles.h"

// A power is a sum of two numbers, high + low, made of products and their rounding errors; the sum is off by less than
// 2^-98 of itself. Nearly always that settles the nearest number. Where it does not, and where a product or its error could
// leave the range of numbers, integers decide.

namespace {

constexpr int kDigitsOfSignificand = 53;
constexpr int kLowestExponent = -1022;  // of a number with all its digits
constexpr std::uint64_t kSignificandBits = (std::uint64_t{1} << 52) - 1;
constexpr std::uint64_t kMagnitudeBits = ~(std::uint64_t{1} << 63);

std::uint64_t BitsOf(double x) {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

// ---- With integers

/// A natural number below 2^448, enough for an eighth power.
class LargeNatural {
 public:
  explicit LargeNatural(std::uint64_t value) : digits_{Low(value), High(value)} {}

  void MultiplyBy(std::uint64_t factor) {
    std::uint32_t const parts[] = {Low(factor), High(factor)};
    std::uint32_t product[kDigits] = {};
    for (int part = 0; part < 2; ++part) {
      std::uint64_t carry = 0;
      for (int i = 0; i + part < kDigits; ++i) {
        carry += std::uint64_t{digits_[i]} * parts[part] + product[i + part];
        product[i + part] = Low(carry);
        carry >>= kBits;
      }
    }
    std::memcpy(digits_, product, sizeof digits_);
  }

  /// Number of bits, without leading zeros. @pre not zero
  int Length() const {
    int i = kDigits - 1;
    while (digits_[i] == 0) --i;
    return kBits * (i + 1) - __builtin_clz(digits_[i]);
  }

  bool HasBit(int i) const { return (digits_[i / kBits] >> (i % kBits) & 1U) != 0; }

  bool HasAnyBitBelow(int end) const {
    for (int i = 0; i < end / kBits; ++i) {
      if (digits_[i] != 0) return true;
    }
    return end % kBits != 0 && digits_[end / kBits] << (kBits - end % kBits) != 0;
  }

  /// What is left without the lowest bits. @pre it has at most 64 bits
  std::uint64_t Without(int lowest) const {
    std::uint64_t rest = 0;
    for (int i = Length(); i-- > lowest;) rest = rest << 1 | (HasBit(i) ? 1U : 0U);
    return rest;
  }

 private:
  static constexpr int kBits = 32;
  static constexpr int kDigits = 14;

  static std::uint32_t Low(std::uint64_t value) { return static_cast<std::uint32_t>(value); }
  static std::uint32_t High(std::uint64_t value) { return static_cast<std::uint32_t>(value >> kBits); }

  std::uint32_t digits_[kDigits];  // the least significant one first
};

/// Raises the exceptions of a number that lost digits because it is so small.
void RaiseUnderflow() {
  double volatile smallest = DBL_MIN;
  smallest = smallest * smallest;
}

/// natural * 2^exponent, rounded to nearest with ties to even.
double Rounded(LargeNatural const& natural, int exponent) {
  int const length = natural.Length();
  int const leading = exponent + length - 1;
  int const digits =
      leading >= kLowestExponent ? kDigitsOfSignificand : kDigitsOfSignificand - (kLowestExponent - leading);
  int const dropped = length - digits;
  if (dropped <= 0) return std::ldexp(static_cast<double>(natural.Without(0)), exponent);
  if (digits < 0) {  // less than half of the smallest number
    RaiseUnderflow();
    return 0.0;
  }
  std::uint64_t kept = natural.Without(dropped);
  bool const half = natural.HasBit(dropped - 1), more = natural.HasAnyBitBelow(dropped - 1);
  if ((half || more) && leading < kLowestExponent) RaiseUnderflow();
  if (half && (more || kept % 2 == 1)) ++kept;
  return std::ldexp(static_cast<double>(kept), exponent + dropped);
}

template <int N>
double ExactPower(double x) {
  bool const isOdd = N % 2 == 1;
  if (!(std::isfinite(x) && x != 0.0)) return isOdd || std::isnan(x) ? x + x : std::fabs(x);
  std::uint64_t const magnitude = BitsOf(x) & kMagnitudeBits;
  std::uint64_t significand = magnitude & kSignificandBits;
  int exponent = static_cast<int>(magnitude >> 52);  // the lowest is that of subnormal numbers, too
  if (exponent > 0) {
    significand |= kSignificandBits + 1;
    --exponent;
  }
  exponent += kLowestExponent - 52;
  int const trailing = __builtin_ctzll(significand);  // digits of zero would only lengthen the product
  significand >>= trailing;
  exponent += trailing;

  LargeNatural power(significand);
  for (int i = 1; i < N; ++i) power.MultiplyBy(significand);
  double const rounded = Rounded(power, N * exponent);
  return isOdd && std::signbit(x) ? -rounded : rounded;
}

// ---- With products and their errors

// From 2^-96 to below 2^96, so that eighth powers, their errors, and all that finds these are in range. Exponents are
// compared as integers, since to compare what is not a number is an invalid operation.
constexpr std::int64_t kLowestBits = std::int64_t{1023 - 96} << 52;
constexpr std::int64_t kEndOfBits = std::int64_t{1023 + 96} << 52;

// Half an ulp is 2^-54 of high at least. So if low grows by 2^-40 of itself and the sum still rounds to high, then so it
// does for an error of 2^-94 of high in low.
constexpr double kGrowth = 1.0 + 0x1p-40;

/// high + low, the first what the sum rounds to.
template <typename Number>
struct TwoParts {
  Number high, low;
};

/// @pre |a| >= |b|, or b is zero
template <typename Number>
TwoParts<Number> Sum(Number a, Number b) {
  Number const high = a + b;
  return {high, b - (high - a)};
}

/// The upper half of the digits of x, such that the rest fits into the other half.
template <typename Number>
Number UpperHalf(Number x) {
  Number const scaled = 134217729.0 * x;  // 2^27 + 1
  return scaled - (scaled - x);
}

/// a * b - product, exactly, with product = a * b as rounded.
template <typename Number>
Number ErrorOfProduct(Number a, Number b, Number product) {
  Number const aHigh = UpperHalf(a), aLow = a - aHigh, bHigh = UpperHalf(b), bLow = b - bHigh;
  return ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
}

#if defined(__FP_FAST_FMA)
inline double ErrorOfProduct(double a, double b, double product) { return __builtin_fma(a, b, -product); }
#endif

/// a * b, up to 2^-102 of it.
template <typename Number>
TwoParts<Number> Product(TwoParts<Number> const& a, TwoParts<Number> const& b) {
  Number const high = a.high * b.high;
  return {high, ErrorOfProduct(a.high, b.high, high) + (a.high * b.low + a.low * b.high)};
}

template <typename Number>
TwoParts<Number> Square(TwoParts<Number> const& a) {
  Number const high = a.high * a.high;
  return {high, ErrorOfProduct(a.high, a.high, high) + 2.0 * (a.high * a.low)};
}

/// x^N. @pre all x are in range
template <int N, typename Number>
TwoParts<Number> PowerInParts(Number x) {
  Number const square = x * x;
  TwoParts<Number> const x2{square, ErrorOfProduct(x, x, square)}, x4 = Square(x2);
  TwoParts<Number> power = x4;
  if constexpr (N == 5) {
    Number const high = x4.high * x;
    power = {high, ErrorOfProduct(x4.high, x, high) + x4.low * x};
  } else if constexpr (N == 6) {
    power = Product(x4, x2);
  } else if constexpr (N == 8) {
    power = Square(x4);
  } else {
    static_assert(N == 4, "one of the kernels' powers");
  }
  return Sum(power.high, power.low);
}

bool IsInRange(double x) {
  auto const bits = static_cast<std::int64_t>(BitsOf(x) & kMagnitudeBits);
  return bits >= kLowestBits && bits < kEndOfBits;
}

#if defined(__SSE2__)

bool AreAllInRange(TwoDoubles x) {
  // The upper halves say enough, and there are comparisons for 32 bits.
  __m128i const bits = _mm_and_si128(_mm_castpd_si128(x), _mm_set1_epi32(0x7fffffff));
  __m128i const least = _mm_set1_epi32(static_cast<int>(kLowestBits >> 32) - 1);
  __m128i const end = _mm_set1_epi32(static_cast<int>(kEndOfBits >> 32));
  __m128i const inRange = _mm_and_si128(_mm_cmpgt_epi32(bits, least), _mm_cmplt_epi32(bits, end));
  return _mm_movemask_pd(_mm_castsi128_pd(inRange)) == 3;
}

bool AreAllSettled(TwoParts<TwoDoubles> const& power) {
  TwoDoubles const grown = power.high + kGrowth * power.low;
  return _mm_movemask_pd(_mm_cmpeq_pd(grown, power.high)) == 3;
}

/// Two numbers. Where one of them needs integers, both are taken alone.
template <int N>
void RaiseTwo(double* x) {
  TwoDoubles const two{x[0], x[1]};
  if (AreAllInRange(two)) {
    TwoParts<TwoDoubles> const power = PowerInParts<N>(two);
    if (AreAllSettled(power)) {
      x[0] = power.high[0];
      x[1] = power.high[1];
      return;
    }
  }
  x[0] = Power<N>(x[0]);
  x[1] = Power<N>(x[1]);
}

#else

template <int N>
void RaiseTwo(double* x) {
  x[0] = Power<N>(x[0]);
  x[1] = Power<N>(x[1]);
}

#endif

#if ZYN_HAS_TARGETS

/// high and low of four numbers. Their names are those of TwoParts, but functions for other instructions are not inlined
/// into these.
struct FourInParts {
  __m256d high, low;
};

/// Keeps a compiler that may fuse operations from computing a product again inside of a sum.
ZYN_TARGET_AVX2_FMA inline __m256d AsRounded(__m256d product) {
  asm("" : "+x"(product));
  return product;
}

ZYN_TARGET_AVX2_FMA inline FourInParts ProductOfFour(__m256d a, __m256d b) {
  __m256d const high = AsRounded(_mm256_mul_pd(a, b));
  return {high, _mm256_fmsub_pd(a, b, high)};
}

ZYN_TARGET_AVX2_FMA inline FourInParts SquareOfFour(FourInParts const& a) {
  FourInParts const square = ProductOfFour(a.high, a.high);
  return {square.high, _mm256_fmadd_pd(_mm256_add_pd(a.high, a.high), a.low, square.low)};
}

template <int N>
ZYN_TARGET_AVX2_FMA inline FourInParts PowerOfFour(__m256d x) {
  FourInParts const x2 = ProductOfFour(x, x), x4 = SquareOfFour(x2);
  FourInParts power = x4;
  if constexpr (N == 5) {
    power = ProductOfFour(x4.high, x);
    power.low = _mm256_fmadd_pd(x4.low, x, power.low);
  } else if constexpr (N == 6) {
    power = ProductOfFour(x4.high, x2.high);
    power.low = _mm256_fmadd_pd(x4.high, x2.low, _mm256_fmadd_pd(x4.low, x2.high, power.low));
  } else if constexpr (N == 8) {
    power = SquareOfFour(x4);
  }
  __m256d const sum = _mm256_add_pd(power.high, power.low);
  return {sum, _mm256_sub_pd(power.low, _mm256_sub_pd(sum, power.high))};
}

ZYN_TARGET_AVX2_FMA inline bool AreFourInRange(__m256d x) {
  __m256i const bits =
      _mm256_and_si256(_mm256_castpd_si256(x), _mm256_set1_epi64x(static_cast<std::int64_t>(kMagnitudeBits)));
  __m256i const inRange = _mm256_and_si256(_mm256_cmpgt_epi64(bits, _mm256_set1_epi64x(kLowestBits - 1)),
                                           _mm256_cmpgt_epi64(_mm256_set1_epi64x(kEndOfBits), bits));
  return _mm256_movemask_pd(_mm256_castsi256_pd(inRange)) == 15;
}

ZYN_TARGET_AVX2_FMA inline bool AreFourSettled(FourInParts const& power) {
  __m256d const grown = _mm256_fmadd_pd(_mm256_set1_pd(kGrowth), power.low, power.high);
  return _mm256_movemask_pd(_mm256_cmp_pd(grown, power.high, _CMP_EQ_OQ)) == 15;
}

/// Four numbers. Where one of them needs integers, all are taken alone.
template <int N>
ZYN_TARGET_AVX2_FMA inline void RaiseFour(double* x) {
  __m256d const four = _mm256_loadu_pd(x);
  if (AreFourInRange(four)) {
    FourInParts const power = PowerOfFour<N>(four);
    if (AreFourSettled(power)) {
      _mm256_storeu_pd(x, power.high);
      return;
    }
  }
  for (int lane = 0; lane < 4; ++lane) x[lane] = Power<N>(x[lane]);
}

template <int N>
ZYN_TARGET_AVX2_FMA void RaiseFourAtATime(double* x, int n) {
  int i = 0;
  for (; i + 4 <= n; i += 4) RaiseFour<N>(x + i);
  if (i == n) return;
  double rest[] = {1.0, 1.0, 1.0, 1.0};
  std::copy(x + i, x + n, rest);
  RaiseFour<N>(rest);
  std::copy(rest, rest + (n - i), x + i);
}

#endif

}  // namespace

template <int N>
double Power(double x) {
  if (x == 1.0) return x;  // at no distance, once in every system
  if (IsInRange(x)) {
    TwoParts<double> const power = PowerInParts<N>(x);
    if (power.high + kGrowth * power.low == power.high) return power.high;
  }
  return ExactPower<N>(x);
}

template <int N>
void RaiseToPower(double* x, int n) {
#if ZYN_HAS_TARGETS
  if (processor::HasAvx2() && processor::HasFma()) return RaiseFourAtATime<N>(x, n);
#endif
  int i = 0;
  for (; i + 2 <= n; i += 2) RaiseTwo<N>(x + i);
  for (; i < n; ++i) x[i] = Power<N>(x[i]);
}

template double Power<4>(double);
template double Power<5>(double);
template double Power<6>(double);
template double Power<8>(double);
template void RaiseToPower<4>(double*, int);
template void RaiseToPower<5>(double*, int);
template void RaiseToPower<6>(double*, int);
template void RaiseToPower<8>(double*, int);
