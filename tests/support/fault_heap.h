/// The process heap of the test build: fails on request, and ends the process when somebody wrote
/// behind a block.
#ifndef DEIMG_TESTS_SUPPORT_FAULT_HEAP_H
#define DEIMG_TESTS_SUPPORT_FAULT_HEAP_H

#include <cstddef>
#include <cstdint>
#include <limits>

namespace deimg::testing {

/// What the calling thread's allocations meet while an object of this class lives.
struct HeapFaults {
  std::int64_t failAt = 0;   ///< the n-th allocation fails (1 is the first)
  bool andAllAfter = false;  ///< and so does every later one
  std::size_t largest = std::numeric_limits<std::size_t>::max();  ///< larger requests fail
  bool refuseRelease = false;  ///< releases are refused (and done all the same)
};

class FaultScope {
 public:
  explicit FaultScope(const HeapFaults& faults);
  ~FaultScope();
  FaultScope(const FaultScope&) = delete;
  FaultScope& operator=(const FaultScope&) = delete;

  /// Allocations asked for and not yet given back, and asked for in all, on this thread.
  static std::int64_t Allocations();
  static std::int64_t Live();
  static std::size_t LargestRequest();
  /// The most bytes that were held at a time since the scope began, or since the last TakePeak().
  static std::size_t PeakBytes();
  static std::size_t TakePeak();
};

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_FAULT_HEAP_H
