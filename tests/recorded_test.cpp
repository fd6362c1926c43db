// Whole jobs against what they gave when it was recorded: sample pictures, and random cameras,
// whole and damaged, with random settings. A line of recorded_jobs.tsv says what came back from one
// picture or from a group of random jobs. Of the environment, DEIMG_RECORD=FILE has the table
// written anew instead, and DEIMG_RECORD_EACH=FILE has a line written for every single job.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "base/byte_order.h"
#include "rawfile/random_camera.h"
#include "support/fault_heap.h"
#include "support/level_choice.h"
#include "support/memory_bounds.h"
#include "support/streams.h"

namespace deimg {
namespace {

using rawfile::Bytes;

constexpr std::uint64_t kRandomJobs = 1600;
constexpr std::uint64_t kGroupJobs = 16;  // every kind of job with every kind of damage

/// Draws that are the same on every machine.
class Draw {
 public:
  explicit Draw(std::uint64_t seed) : engine_(seed) {}
  int operator()(int low, int high) {
    return low + static_cast<int>(engine_() % static_cast<std::uint64_t>(high - low + 1));
  }
  bool OneIn(int n) { return (*this)(1, n) == 1; }
  /// Mostly small, now and then any or the largest of one sign.
  std::uint16_t Word() {
    const int kind = (*this)(0, 7);
    return static_cast<std::uint16_t>(kind < 5    ? (*this)(-2, 34)
                                      : kind == 5 ? (*this)(0, 1) + 32767
                                                  : (*this)(0, 65535));
  }

 private:
  std::mt19937_64 engine_;
};

struct Job {
  Bytes file;
  std::uint32_t flags = 0, format = DEIMG_FORMAT_8BIT;
  std::uint16_t progressMode = DEIMG_PROGRESS_ALL;
  bool withParams = false, planeInFile = false;
  DevelopParams params{};
};

/// Any value in some words of a property; of the tuning block mostly where its codes are.
void DamageProperties(Draw& draw, rawfile::RawFile& camera) {
  using namespace rawfile;
  for (int property = draw(1, 2); property > 0; --property) {
    constexpr std::uint16_t kTags[] = {
        kTagCapture,      kTagLevels,      kTagSensor,       kTagDecoder,
        kTagTuningTables, kTagTuningBlock, kTagWhiteBalance, kTagColourTemperatures,
        kTagTuningBlock};
    const std::uint16_t tag = kTags[draw(0, 8)];
    Bytes bytes = PropertyBytes(camera.properties, tag, camera.order);
    camera.properties.trailing.erase(tag);
    const int words = static_cast<int>(bytes.size() / 2);
    const int most = draw.OneIn(4) ? words : std::min(words, tag == kTagTuningBlock ? 290 : 20);
    for (int n = tag == kTagTuningBlock ? draw(1, 12) : draw(1, 3); n > 0; --n) {
      const auto at = static_cast<std::size_t>(2 * draw(0, most - 1));
      const std::uint16_t value = draw.Word();
      bytes[at] = static_cast<std::uint8_t>(value);
      bytes[at + 1] = static_cast<std::uint8_t>(value >> 8);
      if (camera.order == ByteOrder::kBig) std::swap(bytes[at], bytes[at + 1]);
    }
    if (draw.OneIn(12)) bytes.resize(static_cast<std::size_t>(draw(0, 2 * words)));
    camera.properties.overrides[tag] = bytes;
    if (draw.OneIn(16))
      camera.properties.omitted = {kPropertyTags[static_cast<std::size_t>(draw(0, 13))]};
  }
}

/// Any value in some bytes from `first` to `last`, or the file cut off there.
void DamageBytes(Draw& draw, Bytes& file, std::size_t first, std::size_t last) {
  const auto place = [&] {
    return static_cast<std::size_t>(draw(static_cast<int>(first), static_cast<int>(last) - 1));
  };
  if (draw.OneIn(8)) return file.resize(place());
  for (int n = draw(1, 4); n > 0; --n) {
    std::uint8_t& byte = file[place()];
    byte = static_cast<std::uint8_t>(draw.OneIn(2) ? byte + draw(-3, 3) : draw(0, 255));
  }
}

void RandomParams(Draw& draw, DevelopParams& p) {
  const auto level = [&](int low, int high) {
    return static_cast<std::int16_t>(draw.OneIn(3) ? DEIMG_AS_RECORDED : draw(low, high));
  };
  std::memset(&p, 0x55, sizeof(p));  // what nobody reads
  p.filled = static_cast<std::uint16_t>(draw.OneIn(6) ? draw(0, 2) : 1);
  p.matrixSelect = static_cast<std::uint16_t>(std::max(draw(-3, 2), 0));
  const int beyond = draw.OneIn(6) ? 1 : 0;
  p.toneLevel = level(-1 - beyond, 1 + beyond);
  p.matrixLevel = level(-1 - beyond, 1);
  p.processingSet = level(-1, draw.OneIn(4) ? 4 : 1);
  p.colourLevel = level(-1, 1 + beyond);
  p.chromaMedian = level(-1, 0);
  p.exposureAdjust = static_cast<std::int16_t>(draw.OneIn(2) ? 0 : draw(-20 - beyond, 20 + beyond));
  p.wbPreset = level(-1, 6 + beyond);
  p.wbPointX = draw(-beyond, 50);
  p.wbPointY = draw(-beyond, 24);
  p.whiteBalance.wbGainsSet = static_cast<std::uint16_t>(draw(0, 2));
  const bool wild = draw.OneIn(4);
  for (std::size_t i = 0; i < 4; ++i) {
    p.whiteBalance.wbGains[i] =
        static_cast<std::uint32_t>(wild ? draw(-99999, 99999999) : draw(500, 4000));
  }
}

Job RandomJob(std::uint64_t seed) {
  constexpr std::uint32_t kFlags[] = {DEIMG_JOB_FULL, DEIMG_JOB_QUICK, DEIMG_JOB_PREVIEW,
                                      DEIMG_JOB_THUMBNAIL};
  Draw draw(seed);
  Job job;
  job.flags = kFlags[seed % 4];
  const bool reduced = job.flags >= DEIMG_JOB_PREVIEW;
  rawfile::RawFile camera = rawfile::RandomCamera(seed, {.minWidth = reduced ? 48u : 8u,
                                                         .maxWidth = reduced ? 90u : 60u,
                                                         .minHeight = reduced ? 24u : 2u,
                                                         .maxHeight = 40});
  const auto damage = seed / 4 % 4;
  if (damage == 1) DamageProperties(draw, camera);
  if (damage == 3) camera.dataInHeader = true;
  job.file = Serialize(camera);
  const std::size_t size = job.file.size();
  if (damage == 2) {  // header and directories, or anything
    const std::size_t starts[] = {0, size - std::min<std::size_t>(size, 400), 0};
    const std::size_t ends[] = {26, size, size};
    const auto part = static_cast<std::size_t>(draw(0, 2));
    DamageBytes(draw, job.file, starts[part], ends[part]);
  }
  if (damage == 3) {
    const std::size_t coded = 26 + camera.plane.samples.size() / 4;
    DamageBytes(draw, job.file, 26, std::min(coded + camera.plane.samples.size() / 2, size));
  }
  if (draw.OneIn(2)) job.format = DEIMG_FORMAT_16BIT;
  job.progressMode = static_cast<std::uint16_t>(draw(1, 4));
  job.planeInFile = draw.OneIn(8);
  job.withParams = !draw.OneIn(4);
  RandomParams(draw, job.params);
  return job;
}

/// FNV-1a.
class Hash {
 public:
  void Add(std::uint64_t value) { hash_ = (hash_ ^ value) * 1099511628211u; }
  void Add(const Bytes& bytes) {
    for (const std::uint8_t byte : bytes) Add(byte);
  }
  std::uint64_t value() const { return hash_; }

 private:
  std::uint64_t hash_ = 14695981039346656037u;
};

/// What one job gave.
struct Given {
  Result result = DEIMG_OK;
  std::size_t lines = 0;
  Hash file, back;  // back: everything that came back besides the result
};

Given GivenBy(const Job& job) {
  const testing::FaultScope faults(job.planeInFile ? testing::HeapFaults{.largest = 1 << 20}
                                                   : testing::HeapFaults{});
  const testing::Outcome outcome = testing::Develop(
      job.file, job.flags, job.format, job.withParams ? &job.params : nullptr, job.progressMode);
  EXPECT_EQ(testing::FaultScope::Live(), 0);
  EXPECT_LE(testing::FaultScope::PeakBytes(), testing::MemoryBounds(job.file).largest());
  Given given;
  given.result = outcome.result;
  given.lines = outcome.lines.size();
  given.file.Add(job.file);
  for (const Bytes& line : outcome.lines) given.back.Add(line);
  for (const int report : outcome.reports) given.back.Add(static_cast<std::uint64_t>(report));
  const DevelopParams& p = outcome.params;
  for (const int value :
       {+p.filled, +p.matrixSelect, +p.toneLevel, +p.matrixLevel, +p.processingSet, +p.colourLevel,
        +p.chromaMedian, +p.exposureAdjust, +p.wbPreset, +p.wbPointX, +p.wbPointY,
        +p.whiteBalance.wbGainsSet, +p.unused0[0], +p.unused4[1], +p.unused100[187]}) {
    given.back.Add(static_cast<std::uint64_t>(value));
  }
  for (std::size_t i = 0; i < 4; ++i) given.back.Add(+p.whiteBalance.wbGains[i]);
  return given;
}

/// What the jobs of one line of the table gave.
class Group {
 public:
  void Add(const Given& given) {
    succeeded_ += given.result == DEIMG_OK ? 1 : 0;
    files_.Add(given.file.value());
    back_.Add(given.result);
    back_.Add(given.lines);
    back_.Add(given.back.value());
  }
  std::string Row() const {
    std::ostringstream row;
    row << succeeded_ << '\t' << std::hex << files_.value() << '\t' << back_.value();
    return row.str();
  }

 private:
  int succeeded_ = 0;
  Hash files_, back_;
};

std::map<std::string, Job> Samples() {
  std::map<std::string, Job> jobs;
  const auto add = [&](const std::string& name, std::uint32_t flags, std::uint32_t format) {
    Job job;
    job.file = testing::ReadFileBytes(DEIMG_SAMPLES "/" + name + ".raw");
    job.flags = flags;
    job.format = format;
    jobs[name + '-' + std::to_string(flags) + '-' + std::to_string(format)] = job;
  };
  for (const char* const name : {"coffee", "chart", "landscape"}) {
    for (const std::uint32_t flags :
         {DEIMG_JOB_FULL, DEIMG_JOB_QUICK, DEIMG_JOB_PREVIEW, DEIMG_JOB_THUMBNAIL}) {
      add(name, flags, DEIMG_FORMAT_8BIT);
    }
  }
  add("coffee", DEIMG_JOB_FULL, DEIMG_FORMAT_16BIT);
  return jobs;
}

class RecordedJobs : public testing::LevelTest {};
DEIMG_INSTANTIATE_LEVELS(RecordedJobs);

TEST_P(RecordedJobs, GiveWhatTheyGave) {
  const testing::LevelScope scope(level);
  std::map<std::string, std::string> wanted;
  std::ifstream table(DEIMG_SOURCE_DIR "/tests/recorded_jobs.tsv");
  for (std::string name, row; std::getline(table, name, '\t') && std::getline(table, row);) {
    wanted[name] = row;
  }
  std::ofstream each;
  if (const char* const file = std::getenv("DEIMG_RECORD_EACH")) each.open(file);
  const int choices = testing::LevelScope::Choices();
  std::map<std::string, Group> got;
  const auto add = [&](const std::string& group, const std::string& name, const Job& job) {
    const Given given = GivenBy(job);
    got[group].Add(given);
    if (!each.is_open()) return;
    each << name << '\t' << std::hex << given.result << '\t' << std::dec << given.lines << '\t'
         << std::hex << given.file.value() << '\t' << given.back.value() << '\n';
  };
  for (const auto& [name, job] : Samples()) add(name, name, job);
  for (std::uint64_t first = 1; first <= kRandomJobs; first += kGroupJobs) {
    const std::uint64_t last = first + kGroupJobs - 1;
    const std::string group = std::to_string(first) + '-' + std::to_string(last);
    for (std::uint64_t seed = first; seed <= last; ++seed) {
      add(group, std::to_string(seed), RandomJob(seed));
    }
  }
  EXPECT_GT(testing::LevelScope::Choices(), choices + static_cast<int>(kRandomJobs) / 2)
      << "this level ran";
  if (const char* const record = std::getenv("DEIMG_RECORD")) {
    std::ofstream to(record);
    for (const auto& [name, group] : got) to << name << '\t' << group.Row() << '\n';
    return;
  }
  EXPECT_EQ(got.size(), wanted.size());
  for (const auto& [name, group] : got) {
    EXPECT_EQ(group.Row(), wanted[name])
        << "jobs " << name << "; to find the one, run this and a build that passes with "
        << "DEIMG_RECORD_EACH=FILE, and compare the files: see HACKING.md, Recorded jobs";
  }
}

}  // namespace
}  // namespace deimg
