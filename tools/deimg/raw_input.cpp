#include "raw_input.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "failure.hpp"
#include "interrupt.hpp"

namespace deimg::cli {
namespace {

constexpr size_t kChunk = size_t{1} << 20;
constexpr size_t kLargest = INT32_MAX;
constexpr int kPollMilliseconds = 100;
constexpr const char* kDoing = "reading it";

/// A raw file read to its end and kept.
class KeptInput final : public host::Input {
 public:
  explicit KeptInput(std::vector<std::byte> bytes)
      : Input(bytes.size()), bytes_(std::move(bytes)) {}

 protected:
  uint32_t ReadAt(uint64_t position, void* buffer, uint32_t& count) noexcept override {
    std::memcpy(buffer, bytes_.data() + position, count);
    return 0;
  }

 private:
  std::vector<std::byte> bytes_;
};

/// Waits for data in short steps, so that an interrupt is noticed whichever thread receives it.
void WaitReadable(int descriptor) {
  for (;;) {
    if (CancelFlag()) {
      throw Failure(kDoing, host::CodeText(host::kCancelled), host::kCancelled);
    }
    pollfd wait{descriptor, POLLIN, 0};
    if (poll(&wait, 1, kPollMilliseconds) > 0) return;
  }
}

std::vector<std::byte> ReadToEnd(int descriptor) {
  std::vector<std::byte> bytes;
  for (;;) {
    WaitReadable(descriptor);
    const size_t used = bytes.size();
    if (used > kLargest) {
      throw Failure(kDoing, host::CodeText(host::kInputTooLarge), host::kInputTooLarge);
    }
    bytes.resize(used + kChunk);
    const ssize_t count = read(descriptor, bytes.data() + used, kChunk);
    const int error = errno;
    bytes.resize(used + (count > 0 ? static_cast<size_t>(count) : 0));
    if (count == 0) return bytes;
    if (count < 0 && error != EINTR && error != EAGAIN) throw Failure::System(kDoing, error);
  }
}

struct Descriptor {
  int number;
  ~Descriptor() {
    if (number >= 0) close(number);
  }
};

}  // namespace

std::unique_ptr<host::Input> OpenRaw(const std::string& name) {
  if (name == "-") return std::make_unique<KeptInput>(ReadToEnd(STDIN_FILENO));
  struct stat status {};
  if (stat(name.c_str(), &status) != 0) throw Failure::System("opening it", errno);
  if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
    try {
      return std::make_unique<host::FileInput>(name);
    } catch (const host::Error& error) {
      throw Failure("opening it", error.what(), error.code());
    }
  }
  const Descriptor pipe{open(name.c_str(), O_RDONLY | O_CLOEXEC)};
  if (pipe.number < 0) throw Failure::System("opening it", errno);
  return std::make_unique<KeptInput>(ReadToEnd(pipe.number));
}

}  // namespace deimg::cli
