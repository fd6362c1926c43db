#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "picture_writer.hpp"

namespace deimg::cli {
namespace {

// Large enough that handing over costs nothing beside encoding, small enough for the caches.
constexpr size_t kChunkBytes = size_t{1} << 17;
constexpr size_t kMostChunks = 4;

/// Several lines of one length.
struct Chunk {
  std::vector<std::byte> bytes;
  size_t lineBytes = 0;
};

/// Measured on two cores with one picture of 6 MP: PNG takes 27 % less time with 8 bits and 37 %
/// less with 16, TIFF 32 %, JPEG 4 %.
class PipelinedWriter final : public PictureWriter {
 public:
  explicit PipelinedWriter(std::unique_ptr<PictureWriter> writer)
      : writer_(std::move(writer)), encoder_([this] { Encode(); }) {}
  ~PipelinedWriter() override {
    {
      const std::lock_guard lock(mutex_);
      chunks_.clear();
      ended_ = true;
    }
    changed_.notify_all();
  }
  PipelinedWriter(const PipelinedWriter&) = delete;
  PipelinedWriter& operator=(const PipelinedWriter&) = delete;

  void WriteLine(std::span<const std::byte> line) override {
    filling_.lineBytes = line.size();
    filling_.bytes.insert(filling_.bytes.end(), line.begin(), line.end());
    if (filling_.bytes.size() >= kChunkBytes) HandOver();
  }

  void Finish() override {
    HandOver();
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    changed_.notify_all();
    encoder_.join();
    if (failure_) std::rethrow_exception(failure_);
    writer_->Finish();
  }

 private:
  void HandOver() {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return chunks_.size() < kMostChunks || failure_; });
      if (failure_) std::rethrow_exception(failure_);
      chunks_.push_back(std::exchange(filling_, {}));
    }
    changed_.notify_all();
  }

  /// The encoder's thread: takes chunks until told that there will be no more.
  void Encode() {
    for (;;) {
      Chunk chunk;
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !chunks_.empty() || ended_; });
        if (chunks_.empty()) return;
        chunk = std::move(chunks_.front());
        chunks_.pop_front();
      }
      changed_.notify_all();
      try {
        for (size_t at = 0; at < chunk.bytes.size(); at += chunk.lineBytes) {
          writer_->WriteLine({chunk.bytes.data() + at, chunk.lineBytes});
        }
      } catch (...) {
        const std::lock_guard lock(mutex_);
        failure_ = std::current_exception();
        changed_.notify_all();
        return;
      }
    }
  }

  std::unique_ptr<PictureWriter> writer_;
  Chunk filling_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Chunk> chunks_;
  bool ended_ = false;
  std::exception_ptr failure_;
  std::jthread encoder_;  // last: it uses everything above
};

}  // namespace

std::unique_ptr<PictureWriter> MakePipelinedWriter(std::unique_ptr<PictureWriter> writer) {
  return std::make_unique<PipelinedWriter>(std::move(writer));
}

}  // namespace deimg::cli
