/// One job as a fuzz target runs it: recipe in, result code out, everything given back.
#ifndef DEIMG_FUZZ_JOB_H
#define DEIMG_FUZZ_JOB_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>

#include <deimg/deimg.h>

namespace deimg::fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Ends the process with a message, which the fuzzer takes for a finding.
void Require(bool holds, const char* what);

/// The code of an input whose operation fails.
constexpr std::uint32_t kInputFailed = 0xFA11;

/// A file in three pieces. The filler in the middle keeps inputs short: the library insists on
/// 65,536 coded bytes of which a small picture needs a few hundred.
struct Pieces {
  Bytes head;
  std::uint32_t fill = 0;
  std::uint8_t fillValue = 0;
  Bytes tail;

  std::size_t size() const { return head.size() + fill + tail.size(); }
};

/// An input stream on such a file. All that comes after `wholeReads` reads comes in small portions;
/// the `failAt`-th operation fails, 0 is none.
class PieceStream {
 public:
  explicit PieceStream(const Pieces& pieces, int wholeReads = INT_MAX, int failAt = 0);
  PieceStream(const PieceStream&) = delete;
  PieceStream& operator=(const PieceStream&) = delete;

  CallerStream* get() { return &stream_; }
  int calls() const { return calls_; }
  /// Whether an operation failed whose code the job has to end with: any but Close.
  bool failed() const { return failed_; }

  std::function<void(int n)> opened;  ///< called when the stream is opened for the n-th time

 private:
  static PieceStream& Of(void* cookie) { return *static_cast<PieceStream*>(cookie); }
  std::uint32_t Enter() { return ++calls_ == failAt_ ? kInputFailed : 0; }
  std::uint32_t EnterOrFail();
  std::uint32_t Read(std::uint8_t* buffer, std::uint32_t wanted);

  Pieces pieces_;
  int wholeReads_;
  const int failAt_;
  int calls_ = 0;
  int opens_ = 0;
  bool failed_ = false;
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
    kEveryLevel = 16,  ///< again at every instruction level, and on threads: the same bytes
    kUnknownFormat = 32,
    kUnfilled = 64,    ///< settings whose block says that it is not filled
    kGivenGains = 128  ///< settings with white-balance gains
  };
  /// What is null. From kInputOpen on, operations.
  enum Missing : std::uint8_t {
    kNothing,
    kInput,
    kOutput,
    kInputOpen,
    kInputClose,
    kInputRead,
    kInputSeek,
    kInputTell,
    kOutputOpen,
    kOutputClose,
    kOutputWrite,
    kProgress,
    kMissingKinds
  };
  /// What is wrong with temporary files. The last three are about the plane's, if it has one.
  enum Disk : std::uint8_t {
    kDiskInOrder,
    kNoDirectory,
    kLongDirectory,
    kLongName,
    kNameTaken,
    kFull,
    kEmptied,
    kNotSeekable,
    kDiskKinds
  };
  static constexpr std::uint8_t kAllAfter = 128;  ///< of `heapFault`

  std::uint8_t job;           ///< modulo 5: full, quick, preview, thumbnail, unknown
  std::uint8_t how;           ///< How
  std::uint8_t cancelAt;      ///< the output's operation at which the host cancels; 0 for none
  std::uint8_t inputFailsAt;  ///< the input's operation that fails; 0 for none
  std::uint8_t heapFault;  ///< the allocation that fails; 0 for none; with kAllAfter, the rest too
  std::uint8_t missing;    ///< Missing; nothing from kMissingKinds on
  std::uint8_t disk;       ///< Disk; in order from kDiskKinds on
  std::uint8_t progressMode;  ///< modulo 4
  std::int8_t matrixSelect, toneLevel, matrixLevel, processingSet, colourLevel, chromaMedian;
  std::int8_t exposureAdjust, wbPreset;
  std::uint8_t pointX, pointY;
  std::uint8_t gains[4];  ///< in eighths
};
static_assert(sizeof(JobRecipe) == 22);

/// Takes a structure of bytes from the front of an input; false when the input is too short.
template <typename T>
bool Take(Bytes& input, T& value) {
  static_assert(alignof(T) == 1);  // inputs mean the same on every machine
  if (input.size() < sizeof(T)) return false;
  std::memcpy(&value, input.data(), sizeof(T));
  input = input.subspan(sizeof(T));
  return true;
}

/// Runs one job and requires what holds for every job, whatever the file and whatever fails: a code
/// of the library's or the host's, nothing of the heap kept, no temporary file and no descriptor
/// left, and no further call after a cancellation.
std::uint32_t RunJob(const JobRecipe& recipe, const Pieces& file);

/// Samples of the largest plane that a target is willing to wait for.
constexpr std::uint32_t kLargestPlane = 12288;

/// Whether the file declares a larger one.
bool DeclaresLargePlane(const Pieces& file);

}  // namespace deimg::fuzz

#endif  // DEIMG_FUZZ_JOB_H
