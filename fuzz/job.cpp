#include "job.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "api/develop.h"
#include "pipeline/levels.h"
#include "props/image_props.h"
#include "storage/file_stream.h"
#include "support/fault_heap.h"

/// A job makes and gives back megabytes that it hardly touches: this saves a fifth of a run's time,
/// and freed blocks are still watched for several runs. ASAN_OPTIONS overrides it.
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=8:clear_shadow_mmap_threshold=16777216:malloc_context_size=4";
}

namespace deimg {
namespace {

const Level* chosenLevel = nullptr;  // by the job that runs; null: the best

}  // namespace

const Level& ChosenLevel() {
  static const Level& best = BestLevel("");
  return chosenLevel != nullptr ? *chosenLevel : best;
}

namespace fuzz {
namespace {

constexpr std::uint32_t kCancelled = 0xCA11;
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
    Use(path_);
  }
  ~TemporaryDirectory() { rmdir(path_.c_str()); }

  const std::string& path() const { return path_; }
  /// Names a directory to the library.
  void Use(const std::string& path) {
    if (path == used_) return;
    used_ = path;
    setenv("TMPDIR", path.c_str(), 1);
  }
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
  std::string used_;
};

/// The lowest descriptor that is free, which the next file gets.
int NextDescriptor() {
  const int next = fcntl(STDERR_FILENO, F_DUPFD, 3);
  Require(next >= 0, "a free descriptor");
  close(next);
  return next;
}

/// What is wrong with temporary files while an object of this class lives.
class DiskFault {
 public:
  DiskFault(TemporaryDirectory& directory, std::uint8_t kind) : kind_(kind) {
    constexpr std::size_t kLongestPath = 255;
    std::string used = directory.path();
    if (kind == JobRecipe::kNoDirectory) used += "/none";
    if (kind == JobRecipe::kLongDirectory) used.resize(kLongestPath + 1, '/');
    if (kind == JobRecipe::kLongName) used.resize(kLongestPath - 2, '/');
    directory.Use(used);
    if (kind == JobRecipe::kNameTaken) TakeNextName();
  }
  DiskFault(const DiskFault&) = delete;
  DiskFault& operator=(const DiskFault&) = delete;
  ~DiskFault() {
    if (!taken_.empty()) unlink(taken_.c_str());
  }

  /// Puts something else in the place of the file that has the descriptor, if there is one.
  void ReplaceFile(int descriptor) {
    if (kind_ < JobRecipe::kFull || kind_ >= JobRecipe::kDiskKinds) return;
    if (fcntl(descriptor, F_GETFD) < 0) return;
    int ends[2] = {-1, -1};
    if (kind_ == JobRecipe::kNotSeekable) {
      Require(pipe(ends) == 0, "a pipe");
    } else {
      ends[0] = open(kind_ == JobRecipe::kFull ? "/dev/full" : "/dev/null", O_RDWR);
      Require(ends[0] >= 0, "the device");
    }
    dup2(ends[0], descriptor);
    for (const int end : ends) {
      if (end >= 0) close(end);
    }
    replaced_ = true;
  }
  bool replaced() const { return replaced_; }

 private:
  /// The library counts its names upwards: it has just told one, and its next is the one behind.
  void TakeNextName() {
    char name[256];
    Require(MakeTemporaryName(name, sizeof(name)), "a name");
    const std::string told = name;
    const std::size_t number = told.rfind("_dv") + 3;
    const unsigned long next = std::stoul(told.substr(number), nullptr, 16) + 1;
    std::snprintf(name, sizeof(name), "%s%lX.tmp", told.substr(0, number).c_str(), next & 0xFFFF);
    taken_ = name;
    Require(symlink("none", name) == 0, "to take a name");
  }

  const std::uint8_t kind_;
  bool replaced_ = false;
  std::string taken_;
};

/// Looks at every byte it is handed and cancels at the chosen call.
class Sink {
 public:
  Sink(int cancelAt, std::uint16_t progressMode, const PieceStream& input)
      : cancelAt_(cancelAt), input_(input) {
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
  int inputCallsThen() const { return inputCallsThen_; }
  std::uint32_t sum() const { return sum_; }

 private:
  static Sink& Of(void* cookie) { return *static_cast<Sink*>(cookie); }

  std::uint32_t Enter() {
    Require(!cancelled_, "no call after the cancellation");
    cancelled_ = ++calls_ == cancelAt_;
    if (cancelled_) inputCallsThen_ = input_.calls();
    return cancelled_ ? kCancelled : 0;
  }
  void Look(Bytes bytes) {
    for (const std::uint8_t byte : bytes) sum_ = sum_ * 31 + byte;
  }

  const int cancelAt_;
  const PieceStream& input_;
  int calls_ = 0;
  int inputCallsThen_ = 0;
  bool cancelled_ = false;
  std::uint32_t sum_ = 0;
  CallerStream stream_{};
};

/// Whether a job may end with the code. Two of the library's are internal: they never come out.
bool IsKnown(std::uint32_t result) {
  constexpr std::uint32_t kCodes[] = {DEIMG_OK,
                                      DEIMG_BAD_TUNING,
                                      DEIMG_BAD_DATA,
                                      DEIMG_OUT_OF_MEMORY,
                                      DEIMG_BAD_REQUEST,
                                      DEIMG_NO_WORK_FILE,
                                      DEIMG_FILE_NOT_OPEN,
                                      DEIMG_FILE_SEEK,
                                      DEIMG_FILE_READ,
                                      DEIMG_FILE_WRITE,
                                      DEIMG_UNSUPPORTED,
                                      DEIMG_MISSING,
                                      DEIMG_PROPS_OUT_OF_MEMORY,
                                      DEIMG_PROPS_UNREADABLE,
                                      DEIMG_PROPS_DIRECTORY_TOO_LARGE,
                                      DEIMG_NO_TEMPORARY_STREAM,
                                      kCancelled,
                                      kInputFailed};
  return std::find(std::begin(kCodes), std::end(kCodes), result) != std::end(kCodes);
}

testing::HeapFaults HeapFaultsOf(const JobRecipe& recipe) {
  testing::HeapFaults faults;
  // The plane is kept in memory where 2 MiB remain besides it.
  faults.largest = (recipe.how & JobRecipe::kPlaneInFile) != 0 ? 2u << 20 : kLargestBlock;
  faults.failAt = recipe.heapFault % JobRecipe::kAllAfter;
  faults.andAllAfter = recipe.heapFault >= JobRecipe::kAllAfter;
  return faults;
}

DevelopParams ParamsOf(const JobRecipe& recipe) {
  DevelopParams params{};
  params.filled = (recipe.how & JobRecipe::kUnfilled) != 0 ? 0 : 1;
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
  if ((recipe.how & JobRecipe::kGivenGains) != 0) {
    params.whiteBalance.wbGainsSet = 1;
    for (int i = 0; i < 4; ++i) {
      params.whiteBalance.wbGains[i] = recipe.gains[i] * (DEIMG_WB_GAIN_ONE / 8u);
    }
  }
  return params;
}

void Remove(std::uint8_t missing, CallerStream& input, CallerStream& output) {
  switch (missing) {
    case JobRecipe::kInputOpen:
      input.Open = nullptr;
      break;
    case JobRecipe::kInputClose:
      input.Close = nullptr;
      break;
    case JobRecipe::kInputRead:
      input.Read = nullptr;
      break;
    case JobRecipe::kInputSeek:
      input.Seek = nullptr;
      break;
    case JobRecipe::kInputTell:
      input.Tell = nullptr;
      break;
    case JobRecipe::kOutputOpen:
      output.Open = nullptr;
      break;
    case JobRecipe::kOutputClose:
      output.Close = nullptr;
      break;
    case JobRecipe::kOutputWrite:
      output.Write = nullptr;
      break;
    case JobRecipe::kProgress:
      output.Progress = nullptr;
      break;
    default:
      break;
  }
}

struct Outcome {
  std::uint32_t result;
  std::uint32_t sum;  // over the picture's bytes

  bool operator==(const Outcome&) const = default;
};

/// The job at the chosen level.
Outcome RunOnce(const JobRecipe& recipe, const Pieces& file, const ThreadPlan& threads = {}) {
  static TemporaryDirectory temporary;
  constexpr std::uint32_t kJobs[] = {DEIMG_JOB_FULL, DEIMG_JOB_QUICK, DEIMG_JOB_PREVIEW,
                                     DEIMG_JOB_THUMBNAIL, 1};
  const auto has = [&](JobRecipe::How how) { return (recipe.how & how) != 0; };
  const std::uint8_t missing = recipe.missing < JobRecipe::kMissingKinds ? recipe.missing : 0;
  const int descriptor = NextDescriptor();
  DiskFault disk(temporary, recipe.disk);
  const testing::FaultScope scope(HeapFaultsOf(recipe));

  DevelopParams params = ParamsOf(recipe);
  PieceStream input(file, has(JobRecipe::kShortReads) ? kWholeReads : INT_MAX, recipe.inputFailsAt);
  // The plane's file is made before the input is opened again for the sensor data.
  input.opened = [&](int n) {
    if (n == 2) disk.ReplaceFile(descriptor);
  };
  Sink output(recipe.cancelAt, recipe.progressMode % 4, input);
  Remove(missing, *input.get(), *output.get());
  const std::uint32_t job = kJobs[recipe.job % 5];
  constexpr std::uint32_t kFormats[] = {DEIMG_FORMAT_8BIT, DEIMG_FORMAT_16BIT, 0};
  const std::uint32_t format = kFormats[has(JobRecipe::kUnknownFormat) ? 2
                                        : has(JobRecipe::k16Bit)       ? 1
                                                                       : 0];
  CallerStream* const in = missing == JobRecipe::kInput ? nullptr : input.get();
  CallerStream* const out = missing == JobRecipe::kOutput ? nullptr : output.get();
  DevelopParams* const given = has(JobRecipe::kWithSettings) ? &params : nullptr;
  const std::uint32_t result = threads.threads > 1 ? Develop(in, job, format, given, out, threads)
                                                   : DEImg_DevelopM480(in, job, format, given, out);

  Require(IsKnown(result), "a code that jobs end with");
  Require(output.cancelled() == (result == kCancelled), "the code of the cancellation");
  Require(!output.cancelled() || output.inputCallsThen() == input.calls(),
          "no call of the input after the cancellation");
  Require(!input.failed() || result == kInputFailed, "the code of the input");
  Require(missing == 0 || missing == JobRecipe::kProgress || result != DEIMG_OK,
          "no success without an operation");
  Require(!disk.replaced() || result != DEIMG_OK, "no success without a plane");
  Require(testing::FaultScope::Live() == 0, "every block to be given back");
  Require(NextDescriptor() == descriptor, "every file to be closed");
  const bool usesFiles =
      has(JobRecipe::kPlaneInFile) || recipe.heapFault != 0 || recipe.job % 5 > 1;
  if (usesFiles && recipe.disk != JobRecipe::kNameTaken) {
    Require(temporary.IsEmpty(), "every temporary file to be deleted");
  }
  return {result, output.sum()};
}

}  // namespace

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "required: %s\n", what);
  std::abort();
}

PieceStream::PieceStream(const Pieces& pieces, int wholeReads, int failAt)
    : pieces_(pieces), wholeReads_(wholeReads), failAt_(failAt) {
  stream_.cookie = this;
  stream_.Open = [](void* c, std::uint16_t, std::uint32_t* e) {
    PieceStream& s = Of(c);
    s.position_ = 0;
    *e = s.EnterOrFail();
    if (s.opened) s.opened(++s.opens_);
  };
  stream_.Close = [](void* c, std::uint32_t* e) { *e = Of(c).Enter(); };
  stream_.Read = [](void* c, void* buffer, std::uint32_t* count, std::uint32_t* e) {
    *e = Of(c).EnterOrFail();
    *count = *e != 0 ? 0 : Of(c).Read(static_cast<std::uint8_t*>(buffer), *count);
  };
  stream_.Seek = [](void* c, std::uint16_t origin, std::int32_t offset, std::uint32_t* e) {
    PieceStream& s = Of(c);
    const auto base = static_cast<std::int64_t>(origin == DEIMG_SEEK_CURRENT ? s.position_
                                                : origin == DEIMG_SEEK_END   ? s.pieces_.size()
                                                                             : 0);
    s.position_ = static_cast<std::size_t>(std::max<std::int64_t>(base + offset, 0));
    *e = s.EnterOrFail();
  };
  stream_.Tell = [](void* c, std::uint32_t* e) {
    *e = Of(c).EnterOrFail();
    return static_cast<std::uint32_t>(Of(c).position_);
  };
}

std::uint32_t PieceStream::EnterOrFail() {
  const std::uint32_t error = Enter();
  if (error != 0) failed_ = true;
  return error;
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
  chosenLevel = nullptr;
  const Outcome outcome = RunOnce(recipe, file);
  if ((recipe.how & JobRecipe::kEveryLevel) == 0) return outcome.result;
  for (const Level& level : Levels()) {
    if (!level.isSupported() || &level == &BestLevel("")) continue;
    chosenLevel = &level;
    Require(RunOnce(recipe, file) == outcome, "the same picture at every level");
  }
  // Threads ask for more memory; a failing allocation is another one then.
  const Outcome shared = RunOnce(recipe, file, {.threads = 3, .bandLines = 2, .leastPixels = 0});
  Require(recipe.heapFault != 0 || shared == outcome, "the same picture on several threads");
  return outcome.result;
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

}  // namespace fuzz
}  // namespace deimg
