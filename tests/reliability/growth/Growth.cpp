#include "tests/reliability/growth/Growth.h"

#include <gtest/gtest.h>
#include <valgrind/callgrind.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <sstream>

namespace {

std::atomic<std::uint64_t> nAllocated{0};

void* Allocate(std::size_t size) {
  nAllocated += size;
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}

/// The sum in the file that callgrind has written last; it numbers them.
std::uint64_t LastSummary() {
  static int number = 0;
  char const* const file = std::getenv("ZYN_GROWTH_FILE");
  if (file == nullptr) return 0;
  std::string const name = std::string(file) + "." + std::to_string(++number);
  std::ifstream in(name);
  std::uint64_t summary = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("summary:", 0) == 0 || line.rfind("totals:", 0) == 0) {
      std::istringstream(line.substr(line.find(':') + 1)) >> summary;
    }
  }
  in.close();
  std::filesystem::remove(name);
  return summary;
}

/// n log n doubles to 2.2 times as much at the sizes of these tests; a square would be 4.
constexpr double kMost = 2.6, kLeast = 1.4;

void ExpectGrowth(int n, std::function<std::function<void()>(int)> const& prepare, double least) {
  ASSERT_NE(0U, RUNNING_ON_VALGRIND) << "this program counts instructions by callgrind; ctest runs it so";
  Cost const once = Measure(prepare(n)), twice = Measure(prepare(2 * n));
  ASSERT_GT(once.instructions, 0U);
  auto const ratio = [](std::uint64_t a, std::uint64_t b) {
    return static_cast<double>(a) / static_cast<double>(b);
  };
  double const instructions = ratio(twice.instructions, once.instructions);
  EXPECT_LT(instructions, kMost) << once.instructions << " instructions, then " << twice.instructions;
  EXPECT_GT(instructions, least) << once.instructions << " instructions, then " << twice.instructions;
  EXPECT_LT(ratio(twice.allocatedBytes, once.allocatedBytes), kMost)
      << once.allocatedBytes << " bytes, then " << twice.allocatedBytes;
  testing::Test::RecordProperty("growth", std::to_string(instructions));
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

Cost Measure(std::function<void()> const& work) {
  std::uint64_t const before = nAllocated;
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  work();
  CALLGRIND_DUMP_STATS;
  CALLGRIND_STOP_INSTRUMENTATION;
  std::uint64_t const allocated = nAllocated - before;
  return {LastSummary(), allocated};
}

void ExpectLinear(int n, std::function<std::function<void()>(int)> const& prepare) {
  ExpectGrowth(n, prepare, kLeast);
}

void ExpectAtMostLinear(int n, std::function<std::function<void()>(int)> const& prepare) {
  ExpectGrowth(n, prepare, 0.0);
}
