/**
 * @file streams.hpp
 * Helpers for hosts of the library, in C++20: ready caller streams, and a function that runs one
 * job and reports failures as exceptions. Everything here is made of the C interface in deimg.h.
 *
 *     deimg::host::FileInput raw("picture.raw");
 *     deimg::host::Develop(raw, {}, [&](std::span<const std::byte> line) { Store(line); });
 *
 * Nothing is shared between jobs: different threads may run one each at the same time.
 */
#ifndef DEIMG_STREAMS_HPP
#define DEIMG_STREAMS_HPP

#include <deimg/deimg.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace deimg::host {

/// Codes that the streams of this header store in their error words. The library hands them back
/// unchanged; none of them is a DEImgResult.
inline constexpr uint32_t kCancelled = 0x7D000001;       ///< the host's cancel flag was set
inline constexpr uint32_t kCallbackFailed = 0x7D000002;  ///< a callback of the host threw
inline constexpr uint32_t kInputTooLarge = 0x7D000003;   ///< the input has 2 GiB or more
inline constexpr uint32_t kBadPosition = 0x7D000004;     ///< a seek to a negative position
inline constexpr uint32_t kSystemError = 0x7D010000;     ///< plus an error number of the system

/// One result code and what it means in plain words.
struct CodeMeaning {
  uint32_t code;
  const char* text;
};

/// Every code a job can end with, except system errors.
inline constexpr CodeMeaning kCodeMeanings[] = {
    {DEIMG_OK, "success"},
    {DEIMG_BAD_TUNING, "the file's tuning data contradict themselves"},
    {DEIMG_BAD_DATA, "the coded sensor data are damaged, or the file ends too early"},
    {DEIMG_OUT_OF_MEMORY, "there is not enough memory"},
    {DEIMG_BAD_REQUEST, "this kind of job is not supported"},
    {DEIMG_NOT_STARTED, "internal error: a processing stage was used before it was started"},
    {DEIMG_NO_WORK_FILE, "the work storage or a temporary file cannot be used"},
    {DEIMG_FILE_NOT_OPEN, "a temporary file could not be opened"},
    {DEIMG_FILE_SEEK, "a temporary file could not be positioned"},
    {DEIMG_FILE_TELL, "the position in a temporary file could not be read"},
    {DEIMG_FILE_READ, "a temporary file could not be read"},
    {DEIMG_FILE_WRITE, "a temporary file could not be written; the disk may be full"},
    {DEIMG_NOT_A_BLOCK, "internal error: a pointer is not a memory block of the library"},
    {DEIMG_UNSUPPORTED,
     "a setting, the recorded sensitivity, the picture's geometry or the white-balance point is "
     "not supported"},
    {DEIMG_MISSING, "a required input is missing, or the exposure adjustment is out of range"},
    {DEIMG_PROPS_OUT_OF_MEMORY, "there is not enough memory to read the file's properties"},
    {DEIMG_PROPS_UNREADABLE,
     "this is not a raw file of this camera, or its properties are damaged"},
    {DEIMG_PROPS_DIRECTORY_TOO_LARGE, "the file's property directory is too large"},
    {DEIMG_NO_TEMPORARY_STREAM, "no temporary file could be set up"},
    {kCancelled, "cancelled"},
    {kCallbackFailed, "the host program failed to take a line"},
    {kInputTooLarge, "the file is too large (2 GiB or more)"},
    {kBadPosition, "the file points to a position before its own beginning"},
};

/// What a result code means, in plain words without a full stop.
inline std::string CodeText(uint32_t code) {
  for (const CodeMeaning& meaning : kCodeMeanings) {
    if (meaning.code == code) return meaning.text;
  }
  if (code > kSystemError && code - kSystemError <= 0xFFFF) {
    return std::generic_category().message(static_cast<int>(code - kSystemError));
  }
  return "unknown result code";
}

/// A job or a stream failed; what() is CodeText(code()).
class Error : public std::runtime_error {
 public:
  explicit Error(uint32_t code) : std::runtime_error(CodeText(code)), code_(code) {}
  uint32_t code() const noexcept { return code_; }

 private:
  uint32_t code_;
};

/// The code of the system error `number` (an errno value).
inline uint32_t SystemErrorCode(int number) noexcept {
  return kSystemError + static_cast<uint32_t>(number == 0 ? EIO : number);
}

/// A raw file as the library wants to see it. Derived classes say where its bytes are.
class Input {
 public:
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  virtual ~Input() = default;

  /// The caller stream; valid as long as this object.
  CallerStream* stream() noexcept { return &stream_; }
  /// Reading stops with kCancelled once `flag` is set. The flag must outlive the jobs; may be null.
  void CancelOn(const std::atomic<bool>* flag) noexcept { cancel_ = flag; }
  /// Bytes in the file.
  uint64_t size() const noexcept { return size_; }

 protected:
  explicit Input(uint64_t size = 0) noexcept : size_(size) {
    stream_ = {this, 0, 0, DEIMG_PROGRESS_NEVER, Open, Close, Read, Write, Seek, Tell, nullptr};
  }
  void SetSize(uint64_t size) noexcept { size_ = size; }
  /// Reads up to `count` bytes from `position`, which lies inside the file, into `buffer`. Stores
  /// the number read in `count`; returns 0 or a code for the error word.
  virtual uint32_t ReadAt(uint64_t position, void* buffer, uint32_t& count) noexcept = 0;

 private:
  static Input& Self(void* cookie) noexcept { return *static_cast<Input*>(cookie); }
  static void Open(void* cookie, uint16_t /*mode*/, uint32_t* error) noexcept {
    Self(cookie).position_ = 0;
    *error = Self(cookie).size_ > INT32_MAX ? kInputTooLarge : 0;
  }
  static void Close(void* /*cookie*/, uint32_t* error) noexcept { *error = 0; }
  static void Read(void* cookie, void* buffer, uint32_t* count, uint32_t* error) noexcept {
    Input& self = Self(cookie);
    if (self.cancel_ != nullptr && self.cancel_->load(std::memory_order_relaxed)) {
      *count = 0;
      *error = kCancelled;
      return;
    }
    const uint64_t left = self.position_ < self.size_ ? self.size_ - self.position_ : 0;
    *count = static_cast<uint32_t>(std::min<uint64_t>(*count, left));
    *error = *count == 0 ? 0 : self.ReadAt(self.position_, buffer, *count);
    self.position_ += *count;
  }
  static void Write(void* /*cookie*/, const void* /*buffer*/, uint32_t* count,
                    uint32_t* error) noexcept {
    *count = 0;
    *error = SystemErrorCode(EBADF);
  }
  static void Seek(void* cookie, uint16_t origin, int32_t offset, uint32_t* error) noexcept {
    Input& self = Self(cookie);
    uint64_t base = 0;
    if (origin == DEIMG_SEEK_CURRENT) base = self.position_;
    if (origin == DEIMG_SEEK_END) base = self.size_;
    const int64_t target = static_cast<int64_t>(base) + offset;
    *error = target < 0 ? kBadPosition : 0;
    if (target >= 0) self.position_ = static_cast<uint64_t>(target);
  }
  static uint32_t Tell(void* cookie, uint32_t* error) noexcept {
    *error = 0;
    return static_cast<uint32_t>(Self(cookie).position_);
  }

  CallerStream stream_{};
  uint64_t size_;
  uint64_t position_ = 0;
  const std::atomic<bool>* cancel_ = nullptr;
};

/// A raw file held in memory, which must outlive this object.
class MemoryInput final : public Input {
 public:
  explicit MemoryInput(std::span<const std::byte> bytes) noexcept
      : Input(bytes.size()), bytes_(bytes) {}

 protected:
  uint32_t ReadAt(uint64_t position, void* buffer, uint32_t& count) noexcept override {
    std::memcpy(buffer, bytes_.data() + position, count);
    return 0;
  }

 private:
  std::span<const std::byte> bytes_;
};

/// A raw file on disk; opened by the constructor, which throws Error when that fails.
class FileInput final : public Input {
 public:
  explicit FileInput(const std::filesystem::path& path) : file_(OpenFile(path)) {
    std::error_code status;
    if (std::filesystem::is_directory(path, status)) throw Error(SystemErrorCode(EISDIR));
    const auto bytes = std::filesystem::file_size(path, status);
    if (status) throw Error(SystemErrorCode(status.value()));
    SetSize(bytes);
  }

 protected:
  uint32_t ReadAt(uint64_t position, void* buffer, uint32_t& count) noexcept override {
    const uint32_t wanted = count;
    count = 0;
    if (position != filePosition_) {
      // Positions are below 2 GiB: Open refuses larger files.
      if (std::fseek(file_.get(), static_cast<long>(position), SEEK_SET) != 0) {
        return SystemErrorCode(errno);
      }
      filePosition_ = position;
    }
    errno = 0;
    count = static_cast<uint32_t>(std::fread(buffer, 1, wanted, file_.get()));
    filePosition_ += count;
    return count < wanted && std::ferror(file_.get()) != 0 ? SystemErrorCode(errno) : 0;
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, Closer>;

  static File OpenFile(const std::filesystem::path& path) {
#if defined(_WIN32)
    File file(_wfopen(path.c_str(), L"rb"));
#else
    File file(std::fopen(path.c_str(), "rb"));
#endif
    if (!file) throw Error(SystemErrorCode(errno));
    return file;
  }

  File file_;
  uint64_t filePosition_ = 0;
};

/// Receives one finished line, top line first: red, green and blue interleaved, one byte each or,
/// with DEIMG_FORMAT_16BIT, two bytes each, low byte first. Valid during the call only. An
/// exception ends the job and leaves Develop().
using LineCallback = std::function<void(std::span<const std::byte> line)>;
/// Receives the job's progress, 0 to 100. An exception ends the job and leaves Develop().
using ProgressCallback = std::function<void(int percent)>;

/// The output stream: hands lines and progress to callbacks.
class LineOutput {
 public:
  explicit LineOutput(LineCallback onLine, ProgressCallback onProgress = {},
                      const std::atomic<bool>* cancel = nullptr)
      : onLine_(std::move(onLine)), onProgress_(std::move(onProgress)), cancel_(cancel) {
    stream_ = {this, 0, 0, DEIMG_PROGRESS_ALL, Open, Close, Read, Write, Seek, Tell, Progress};
  }
  LineOutput(const LineOutput&) = delete;
  LineOutput& operator=(const LineOutput&) = delete;

  /// The caller stream; valid as long as this object.
  CallerStream* stream() noexcept { return &stream_; }
  /// Throws again what a callback threw; returns when none did.
  void Rethrow() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  static LineOutput& Self(void* cookie) noexcept { return *static_cast<LineOutput*>(cookie); }
  static void Open(void* /*cookie*/, uint16_t /*mode*/, uint32_t* error) noexcept { *error = 0; }
  static void Close(void* /*cookie*/, uint32_t* error) noexcept { *error = 0; }
  static void Read(void* /*cookie*/, void* /*buffer*/, uint32_t* count, uint32_t* error) noexcept {
    *count = 0;
    *error = SystemErrorCode(EBADF);
  }
  static void Seek(void* /*cookie*/, uint16_t /*origin*/, int32_t /*offset*/,
                   uint32_t* error) noexcept {
    *error = SystemErrorCode(ESPIPE);
  }
  static uint32_t Tell(void* /*cookie*/, uint32_t* error) noexcept {
    *error = SystemErrorCode(ESPIPE);
    return 0;
  }
  static void Write(void* cookie, const void* buffer, uint32_t* count, uint32_t* error) noexcept {
    LineOutput& self = Self(cookie);
    *error = self.Call([&] {
      if (self.onLine_) self.onLine_({static_cast<const std::byte*>(buffer), *count});
    });
  }
  static void Progress(void* cookie, uint16_t percent, uint32_t* error) noexcept {
    LineOutput& self = Self(cookie);
    *error = self.Call([&] {
      if (self.onProgress_) self.onProgress_(percent);
    });
  }
  template <typename Function>
  uint32_t Call(const Function& function) noexcept {
    if (cancel_ != nullptr && cancel_->load(std::memory_order_relaxed)) return kCancelled;
    if (thrown_) return kCallbackFailed;
    try {
      function();
      return 0;
    } catch (...) {
      thrown_ = std::current_exception();
      return kCallbackFailed;
    }
  }

  CallerStream stream_{};
  LineCallback onLine_;
  ProgressCallback onProgress_;
  const std::atomic<bool>* cancel_;
  std::exception_ptr thrown_;
};

/// Settings under which the picture is developed as recorded in the raw file.
inline DevelopParams AsRecorded() noexcept {
  DevelopParams params{};
  params.filled = 1;
  params.toneLevel = DEIMG_AS_RECORDED;
  params.matrixLevel = DEIMG_AS_RECORDED;
  params.processingSet = DEIMG_AS_RECORDED;
  params.colourLevel = DEIMG_AS_RECORDED;
  params.wbPreset = DEIMG_AS_RECORDED;
  return params;
}

/// The library's function, or one in its place.
using DevelopFunction = std::function<uint32_t(CallerStream* input, uint32_t flags, uint32_t format,
                                               DevelopParams* params, CallerStream* output)>;

/// What to make of a raw file.
struct Options {
  DEImgJob job = DEIMG_JOB_FULL;
  DEImgFormat format = DEIMG_FORMAT_8BIT;
  DevelopParams settings = AsRecorded();
  ProgressCallback progress = {};  ///< may be empty
  const std::atomic<bool>* cancel =
      nullptr;  ///< ends the job with kCancelled once set; may be null
  /// Such as the one of a library that the host loaded itself.
  DevelopFunction function = DEImg_DevelopM480;
};

/// Develops one raw file and hands every line to `onLine`.
/// Returns the settings with the white-balance gains that were used. Throws Error, or whatever a
/// callback threw.
inline DevelopParams Develop(Input& input, const Options& options, LineCallback onLine) {
  DevelopParams settings = options.settings;
  LineOutput output(std::move(onLine), options.progress, options.cancel);
  input.CancelOn(options.cancel);
  const uint32_t code =
      options.function(input.stream(), static_cast<uint32_t>(options.job),
                       static_cast<uint32_t>(options.format), &settings, output.stream());
  output.Rethrow();
  if (code != DEIMG_OK) throw Error(code);
  return settings;
}

/// A developed picture held in memory.
struct Picture {
  std::vector<std::byte> samples;  ///< lines without padding, top line first
  size_t lineBytes = 0;
  DevelopParams settings{};  ///< as returned by the other form of Develop

  size_t lines() const noexcept { return lineBytes == 0 ? 0 : samples.size() / lineBytes; }
};

/// Develops one raw file into memory. Throws as the other form does.
inline Picture Develop(Input& input, const Options& options = {}) {
  Picture picture;
  picture.settings = Develop(input, options, [&](std::span<const std::byte> line) {
    picture.lineBytes = line.size();
    picture.samples.insert(picture.samples.end(), line.begin(), line.end());
  });
  return picture;
}

}  // namespace deimg::host

#endif  // DEIMG_STREAMS_HPP
