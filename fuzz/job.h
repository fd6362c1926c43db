/// One job as a fuzz target runs it: recipe in, result code out, everything given back.
#ifndef DEIMG_FUZZ_JOB_H
#define DEIMG_FUZZ_JOB_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include <deimg/deimg.h>

namespace deimg::fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Ends the process with a message, which the fuzzer takes for a finding.
void Require(bool holds, const char* what);

/// A file in three pieces. The filler in the middle keeps inputs short: the library insists on
/// 65,536 coded bytes of which a small picture needs a few hundred.
struct Pieces {
  Bytes head;
  std::uint32_t fill = 0;
  std::uint8_t fillValue = 0;
  Bytes tail;

  std::size_t size() const { return head.size() + fill + tail.size(); }
};

/// An input stream on such a file. All that comes after `wholeReads` reads comes in small portions.
class PieceStream {
 public:
  explicit PieceStream(const Pieces& pieces, int wholeReads = INT_MAX);
  PieceStream(const PieceStream&) = delete;
  PieceStream& operator=(const PieceStream&) = delete;

  CallerStream* get() { return &stream_; }

 private:
  std::uint32_t Read(std::uint8_t* buffer, std::uint32_t wanted);

  Pieces pieces_;
  int wholeReads_;
  std::size_t position_ = 0;
  CallerStream stream_{};
};

/// What is asked of the library, as the first bytes of a fuzz input.
struct JobRecipe {
  enum How : std::uint8_t {
    kPlaneInFile = 1,
    kWithSettings = 2,
    k16Bit = 4,
    kShortReads = 8,
    kHeapFails = 16,       ///< from the allocation `cancelAt` on, instead of the cancellation
    kReleaseRefused = 32,  ///< by the heap
    kUnknownRequest = 64,  ///< another format and kind of job
  };

  std::uint8_t job;       ///< modulo 4: full, quick, preview, thumbnail
  std::uint8_t how;       ///< How
  std::uint8_t cancelAt;  ///< the call at which the host cancels; 0 for none
  std::int8_t matrixSelect, toneLevel, matrixLevel, processingSet, colourLevel, chromaMedian;
  std::int8_t exposureAdjust, wbPreset;
  std::uint8_t pointX, pointY;
};
static_assert(sizeof(JobRecipe) == 13);

/// Takes a structure of bytes from the front of an input; false when the input is too short.
template <typename T>
bool Take(Bytes& input, T& value) {
  if (input.size() < sizeof(T)) return false;
  std::memcpy(&value, input.data(), sizeof(T));
  input = input.subspan(sizeof(T));
  return true;
}

/// Runs one job and requires what holds for every job, whatever the file: nothing of the heap is
/// kept, no temporary file stays, and a cancelled job ends with the host's code and no further
/// call.
std::uint32_t RunJob(const JobRecipe& recipe, const Pieces& file);

/// Whether the file declares a plane larger than a target is willing to wait for.
bool DeclaresLargePlane(const Pieces& file);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_JOB_H
