#include "support/fault_heap.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
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

std::size_t HeldBytes(void* allocation) {
#ifdef _WIN32
  return _msize(allocation);
#else
  return malloc_usable_size(allocation);
#endif
}

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
  void* const made = zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
  if (made == nullptr) return nullptr;
  ++counters.live;
  counters.bytes += HeldBytes(made);
  counters.peakBytes = std::max(counters.peakBytes, counters.bytes);
  return made;
}

bool HeapRelease(void* allocation) noexcept {
  --counters.live;
  counters.bytes -= HeldBytes(allocation);
  std::free(allocation);
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
