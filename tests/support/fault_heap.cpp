#include "support/fault_heap.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/platform.h"

namespace deimg {
namespace {

struct Counters {
  testing::HeapFaults faults;
  std::int64_t allocations = 0;
  std::int64_t live = 0;
  std::size_t largest = 0;
  std::size_t bytes = 0;
  std::size_t peakBytes = 0;
};

thread_local Counters counters;

/// What stands in front of a piece of memory; behind it stands a guard. The place within 64 bytes
/// is the one where blocks that are aligned to 64 end right in front of the guard.
struct Front {
  void* made;
  std::size_t bytes;
};
constexpr std::size_t kPlace = 48;
constexpr std::array<std::uint8_t, 16> kGuard = {0xDE, 0xAD, 0xBE, 0xEF};
constexpr std::size_t kMostFilled = std::size_t{1} << 20;  // more would be touched for nothing

bool Fails(std::size_t bytes) {
  const testing::HeapFaults& f = counters.faults;
  const std::int64_t n = counters.allocations;
  return bytes > f.largest || (f.failAt > 0 && (n == f.failAt || (f.andAllAfter && n > f.failAt)));
}

}  // namespace

namespace platform {

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  ++counters.allocations;
  counters.largest = std::max(counters.largest, bytes);
  if (Fails(bytes)) return nullptr;
  void* const made = std::calloc(1, 2 * 64 + bytes + kGuard.size());
  if (made == nullptr) return nullptr;
  const auto start = (reinterpret_cast<std::uintptr_t>(made) + 63) / 64 * 64 + kPlace;
  auto* const memory = reinterpret_cast<std::uint8_t*>(start);
  const Front front{made, bytes};
  std::memcpy(memory - sizeof(Front), &front, sizeof(Front));
  std::memcpy(memory + bytes, kGuard.data(), kGuard.size());
  if (!zeroed && bytes <= kMostFilled) std::memset(memory, 0xA5, bytes);
  ++counters.live;
  counters.bytes += bytes;
  counters.peakBytes = std::max(counters.peakBytes, counters.bytes);
  return memory;
}

bool HeapRelease(void* allocation) noexcept {
  Front front;
  const auto* const memory = static_cast<std::uint8_t*>(allocation);
  std::memcpy(&front, memory - sizeof(Front), sizeof(Front));
  if (std::memcmp(memory + front.bytes, kGuard.data(), kGuard.size()) != 0) {
    std::fprintf(stderr, "written behind a block of %zu bytes\n", front.bytes);
    std::abort();
  }
  --counters.live;
  counters.bytes -= front.bytes;
  std::free(front.made);
  return !counters.faults.refuseRelease;
}

}  // namespace platform

namespace testing {

FaultScope::FaultScope(const HeapFaults& faults) {
  counters = {faults, 0, counters.live, 0, counters.bytes, counters.bytes};
}
FaultScope::~FaultScope() { counters.faults = {}; }
std::int64_t FaultScope::Allocations() { return counters.allocations; }
std::int64_t FaultScope::Live() { return counters.live; }
std::size_t FaultScope::LargestRequest() { return counters.largest; }
std::size_t FaultScope::PeakBytes() { return counters.peakBytes; }
std::size_t FaultScope::TakePeak() { return std::exchange(counters.peakBytes, counters.bytes); }

}  // namespace testing
}  // namespace deimg
