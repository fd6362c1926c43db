/// Caller streams for tests: a raw file in memory, and an output that keeps everything.
#ifndef DEIMG_TESTS_SUPPORT_STREAMS_H
#define DEIMG_TESTS_SUPPORT_STREAMS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <deimg/deimg.h>

namespace deimg::testing {

/// The operations of a stream, for faults.
enum class Op { kOpen, kClose, kRead, kWrite, kSeek, kTell, kProgress };

/// Called before every operation with the operation and its number (1 is the first of its kind); a
/// nonzero result becomes the operation's error word and the operation does nothing.
using Fault = std::function<std::uint32_t(Op, int)>;

/// A stream on bytes in memory. Reads past the end are cut short, and to `readAtMost` bytes each.
class InputStream {
 public:
  explicit InputStream(std::vector<std::uint8_t> bytes, Fault fault = {});
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;

  CallerStream* get() { return &stream_; }
  int count(Op op) const { return counts_[static_cast<std::size_t>(op)]; }
  bool isOpen() const { return open_; }

  std::uint32_t readAtMost = UINT32_MAX;
  /// When set: how many bytes the n-th read delivers of those wanted.
  std::function<std::uint32_t(int n, std::uint32_t wanted)> cut;

 private:
  std::uint32_t Enter(Op op);

  std::vector<std::uint8_t> bytes_;
  Fault fault_;
  std::size_t position_ = 0;
  bool open_ = false;
  int counts_[7] = {};
  CallerStream stream_{};
};

/// Keeps what a job delivers.
class OutputStream {
 public:
  explicit OutputStream(std::uint16_t progressMode = DEIMG_PROGRESS_ALL, Fault fault = {});
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  CallerStream* get() { return &stream_; }
  int count(Op op) const { return counts_[static_cast<std::size_t>(op)]; }

  std::vector<std::vector<std::uint8_t>> lines;
  std::vector<int> reports;
  std::uint16_t openMode = 0;
  bool closed = false;

 private:
  std::uint32_t Enter(Op op);

  Fault fault_;
  int counts_[7] = {};
  CallerStream stream_{};
};

/// Everything that comes back from a call.
struct Outcome {
  std::uint32_t result = 0;
  std::vector<std::vector<std::uint8_t>> lines;
  std::vector<int> reports;
  DevelopParams params{};

  bool operator==(const Outcome& other) const {
    return result == other.result && lines == other.lines;
  }
};

/// Develops a raw file in memory; the block of settings is given back as it was left.
Outcome Develop(const std::vector<std::uint8_t>& file, std::uint32_t flags, std::uint32_t format,
                const DevelopParams* params = nullptr,
                std::uint16_t progressMode = DEIMG_PROGRESS_ALL);

/// A filled block with every level as recorded.
DevelopParams RecordedParams();

/// A file's bytes; fails the test when it cannot be read.
std::vector<std::uint8_t> ReadFileBytes(const std::string& path);

/// Files in a directory whose names begin with "_dv".
std::vector<std::string> TemporaryFilesIn(const std::string& directory);

}  // namespace deimg::testing

#endif  // DEIMG_TESTS_SUPPORT_STREAMS_H
