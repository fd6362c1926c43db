#include "job.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "props/image_props.h"
#include "support/fault_heap.h"

namespace deimg::fuzz {
namespace {

constexpr std::uint32_t kCancelled = 0xCA11;
constexpr std::uint32_t kLargestPlane = 12288;  // samples
constexpr std::size_t kLargestBlock = 8u << 20;
constexpr int kWholeReads = 7;  // properties, low bits, first coded bytes
constexpr std::uint32_t kPortion = 61;

/// A directory of its own for every process, removed at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    const char* const parent = std::getenv("TMPDIR");
    path_ = std::string(parent != nullptr ? parent : "/tmp") + "/deimg-fuzz-XXXXXX";
    Require(mkdtemp(path_.data()) != nullptr, "a temporary directory");
    setenv("TMPDIR", path_.c_str(), 1);
  }
  ~TemporaryDirectory() { rmdir(path_.c_str()); }

  bool IsEmpty() const {
    DIR* const directory = opendir(path_.c_str());
    Require(directory != nullptr, "the temporary directory to be there");
    int entries = 0;
    while (readdir(directory) != nullptr) ++entries;
    closedir(directory);
    return entries == 2;
  }

 private:
  std::string path_;
};

/// Looks at every byte it is handed and cancels at the chosen call.
class Sink {
 public:
  Sink(int cancelAt, std::uint16_t progressMode) : cancelAt_(cancelAt) {
    stream_.cookie = this;
    stream_.progressMode = progressMode;
    stream_.Open = [](void* c, std::uint16_t, std::uint32_t* e) { *e = Of(c).Enter(); };
    stream_.Close = [](void* c, std::uint32_t* e) { *e = Of(c).Enter(); };
    stream_.Write = [](void* c, const void* bytes, std::uint32_t* count, std::uint32_t* e) {
      *e = Of(c).Enter();
      Of(c).Look({static_cast<const std::uint8_t*>(bytes), *count});
    };
    stream_.Progress = [](void* c, std::uint16_t percent, std::uint32_t* e) {
      Require(percent <= 100, "a percentage");
      *e = Of(c).Enter();
    };
  }

  CallerStream* get() { return &stream_; }
  bool cancelled() const { return cancelled_; }

 private:
  static Sink& Of(void* cookie) { return *static_cast<Sink*>(cookie); }

  std::uint32_t Enter() {
    Require(!cancelled_, "no call after the cancellation");
    cancelled_ = ++calls_ == cancelAt_;
    return cancelled_ ? kCancelled : 0;
  }
  void Look(Bytes bytes) {
    for (const std::uint8_t byte : bytes) sum_ = sum_ * 31 + byte;
  }

  const int cancelAt_;
  int calls_ = 0;
  bool cancelled_ = false;
  volatile std::uint32_t sum_ = 0;
  CallerStream stream_{};
};

}  // namespace

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "required: %s\n", what);
  std::abort();
}

PieceStream::PieceStream(const Pieces& pieces, int wholeReads)
    : pieces_(pieces), wholeReads_(wholeReads) {
  stream_.cookie = this;
  stream_.Open = [](void* c, std::uint16_t, std::uint32_t* e) {
    static_cast<PieceStream*>(c)->position_ = 0;
    *e = 0;
  };
  stream_.Close = [](void*, std::uint32_t* e) { *e = 0; };
  stream_.Read = [](void* c, void* buffer, std::uint32_t* count, std::uint32_t* e) {
    *count = static_cast<PieceStream*>(c)->Read(static_cast<std::uint8_t*>(buffer), *count);
    *e = 0;
  };
  stream_.Seek = [](void* c, std::uint16_t origin, std::int32_t offset, std::uint32_t* e) {
    auto& s = *static_cast<PieceStream*>(c);
    const auto base = static_cast<std::int64_t>(origin == DEIMG_SEEK_CURRENT ? s.position_
                                                : origin == DEIMG_SEEK_END   ? s.pieces_.size()
                                                                             : 0);
    s.position_ = static_cast<std::size_t>(std::max<std::int64_t>(base + offset, 0));
    *e = 0;
  };
  stream_.Tell = [](void* c, std::uint32_t* e) {
    *e = 0;
    return static_cast<std::uint32_t>(static_cast<PieceStream*>(c)->position_);
  };
}

std::uint32_t PieceStream::Read(std::uint8_t* buffer, std::uint32_t wanted) {
  const std::size_t headEnd = pieces_.head.size();
  const std::size_t fillEnd = headEnd + pieces_.fill;
  const std::size_t left = wholeReads_-- > 0 ? wanted : std::min(wanted, kPortion);
  const std::size_t start = position_;
  const std::size_t end = std::min(start + left, std::max(start, pieces_.size()));
  while (position_ < end) {
    std::uint8_t* const to = buffer + (position_ - start);
    std::size_t n = 0;
    if (position_ < headEnd) {
      n = std::min(end, headEnd) - position_;
      std::memcpy(to, pieces_.head.data() + position_, n);
    } else if (position_ < fillEnd) {
      n = std::min(end, fillEnd) - position_;
      std::memset(to, pieces_.fillValue, n);
    } else {
      n = end - position_;
      std::memcpy(to, pieces_.tail.data() + (position_ - fillEnd), n);
    }
    position_ += n;
  }
  return static_cast<std::uint32_t>(end - start);
}

std::uint32_t RunJob(const JobRecipe& recipe, const Pieces& file) {
  static const TemporaryDirectory temporary;
  constexpr std::uint32_t kJobs[] = {DEIMG_JOB_FULL, DEIMG_JOB_QUICK, DEIMG_JOB_PREVIEW,
                                     DEIMG_JOB_THUMBNAIL};
  const bool inFile = (recipe.how & JobRecipe::kPlaneInFile) != 0;
  testing::HeapFaults faults;
  // The plane is kept in memory where 2 MiB remain besides it.
  faults.largest = inFile ? 2u << 20 : kLargestBlock;
  const bool heapFails = (recipe.how & JobRecipe::kHeapFails) != 0;
  if (heapFails) faults.failAt = 1 + recipe.cancelAt;
  faults.andAllAfter = recipe.cancelAt % 2 == 0;
  faults.refuseRelease = (recipe.how & JobRecipe::kReleaseRefused) != 0;
  const testing::FaultScope scope(faults);

  DevelopParams params{};
  params.filled = 1;
  params.matrixSelect = static_cast<std::uint16_t>(recipe.matrixSelect);
  params.toneLevel = recipe.toneLevel;
  params.matrixLevel = recipe.matrixLevel;
  params.processingSet = recipe.processingSet;
  params.colourLevel = recipe.colourLevel;
  params.chromaMedian = recipe.chromaMedian;
  params.exposureAdjust = recipe.exposureAdjust;
  params.wbPreset = recipe.wbPreset;
  params.wbPointX = recipe.pointX;
  params.wbPointY = recipe.pointY;

  PieceStream input(file, (recipe.how & JobRecipe::kShortReads) != 0 ? kWholeReads : INT_MAX);
  Sink output(heapFails ? 0 : recipe.cancelAt, DEIMG_PROGRESS_ALL);
  const bool unknown = (recipe.how & JobRecipe::kUnknownRequest) != 0;
  const std::uint32_t format =
      (recipe.how & JobRecipe::k16Bit) != 0 ? DEIMG_FORMAT_16BIT : DEIMG_FORMAT_8BIT;
  const std::uint32_t result = DEImg_DevelopM480(
      input.get(), unknown ? recipe.job : kJobs[recipe.job % 4], unknown ? recipe.pointX : format,
      (recipe.how & JobRecipe::kWithSettings) != 0 ? &params : nullptr, output.get());
  Require(output.cancelled() == (result == kCancelled), "the code of the cancellation");
  Require(testing::FaultScope::Live() == 0, "every block to be given back");
  Require(!inFile || temporary.IsEmpty(), "every temporary file to be deleted");
  return result;
}

bool DeclaresLargePlane(const Pieces& file) {
  PieceStream input(file);
  ImagePropsBlock block;
  if (ReadImagePropsBlock(*input.get(), block) != DEIMG_OK) return false;
  static ImageProps props;
  std::memset(&props, 0, sizeof(props));
  if (pxfPsReadOpenImageProps(block, props) != DEIMG_OK) return false;
  return std::uint32_t{props.sensor.width} * props.sensor.height > kLargestPlane;
}

}  // namespace deimg::fuzz
