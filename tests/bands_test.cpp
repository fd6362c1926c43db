// One picture on several threads: the same bytes, the same calls of the host's streams in the same
// order on the calling thread, and the same failures as on one, whatever becomes of the helpers.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <random>
#include <thread>

#include "api/develop.h"
#include "api/thread_count.h"
#include "support/band_events.h"
#include "support/job_kinds.h"

namespace deimg::testing {
namespace {

/// What a job did, as the host sees it.
struct Trace {
  Outcome outcome;
  std::vector<int> calls;  ///< of both streams, in order
  bool otherThread = false;

  bool operator==(const Trace& other) const {
    return outcome == other.outcome && outcome.reports == other.outcome.reports &&
           std::memcmp(&outcome.params, &other.outcome.params, sizeof(DevelopParams)) == 0 &&
           calls == other.calls && otherThread == other.otherThread;
  }
};

/// Delays bands at random, counts those that helpers computed, and sees that helpers keep nothing.
class Helpers {
 public:
  Helpers() { present = this; }
  ~Helpers() { present = nullptr; }
  Helpers(const Helpers&) = delete;
  Helpers& operator=(const Helpers&) = delete;

  /// Until a helper of this job has computed a band, or none can.
  static void WaitForOne() {
    while (present != nullptr && present->bandsOfJob_ == 0 && present->alive_ > 0) Sleep(20);
  }
  static void StartJob() {
    if (present != nullptr) present->bandsOfJob_ = 0;
  }

  std::atomic<int> bands{0};
  int refuseFrom = ThreadPlan::kMost;  ///< threads from this number on are not to be had
  HeapFaults heap = {};                ///< what the allocations of every helper meet

 private:
  bool Tell(BandMoment moment, int number) {
    thread_local std::optional<FaultScope> scope;
    switch (moment) {
      case BandMoment::kThreadStarts:
        if (number >= refuseFrom) return false;
        ++alive_;
        break;
      case BandMoment::kThreadBegins:
        scope.emplace(heap);
        break;
      case BandMoment::kBandComputed:
        Sleep(Delay());
        if (scope) ++bands, ++bandsOfJob_;
        break;
      case BandMoment::kThreadEnds:
        EXPECT_EQ(FaultScope::Live(), 0);
        scope.reset();
        --alive_;
        break;
    }
    return true;
  }
  static void Sleep(long microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
  }
  static long Delay() {
    thread_local std::minstd_rand random(
        static_cast<unsigned>(std::hash<std::thread::id>()(std::this_thread::get_id())));
    return random() % 4 == 0 ? static_cast<long>(random() % 1000) : 0;
  }

  static inline Helpers* present = nullptr;
  std::atomic<int> bandsOfJob_{0};
  std::atomic<int> alive_{0};
  BandEventScope scope_{[this](BandMoment moment, int number) { return Tell(moment, number); }};
};

/// A job, and what its host does at its calls: a nonzero result is the call's error word.
struct BandsJob {
  std::vector<std::uint8_t> file;
  std::uint32_t flags = DEIMG_JOB_FULL;
  std::uint32_t format = DEIMG_FORMAT_8BIT;
  DevelopParams params = RecordedParams();
  std::function<std::uint32_t(int call, DevelopParams& params)> atCall = {};

  Trace Run(const ThreadPlan& plan, const HeapFaults& heap = {}) const {
    Helpers::StartJob();
    Trace trace;
    trace.outcome.params = params;
    const auto self = std::this_thread::get_id();
    const auto record = [&](int stream) {
      return [&, stream](Op op, int) {
        trace.otherThread |= std::this_thread::get_id() != self;
        trace.calls.push_back(10 * stream + static_cast<int>(op));
        if (stream == 1 && trace.calls.size() > 1) Helpers::WaitForOne();
        const int call = static_cast<int>(trace.calls.size());
        return atCall ? atCall(call, trace.outcome.params) : 0;
      };
    };
    InputStream input(file, record(0));
    OutputStream output(DEIMG_PROGRESS_ALL, record(1));
    {
      const FaultScope scope(heap);
      trace.outcome.result =
          deimg::Develop(input.get(), flags, format, &trace.outcome.params, output.get(), plan);
      EXPECT_EQ(FaultScope::Live(), 0);
    }
    trace.outcome.lines = std::move(output.lines);
    trace.outcome.reports = std::move(output.reports);
    return trace;
  }
};

constexpr ThreadPlan kOneThread = {};
constexpr ThreadPlan Threads(int threads, int bandLines) { return {threads, bandLines, 0}; }

TEST(BandsTest, SameBytesAndCallsOnAnyNumberOfThreads) {
  Helpers helpers;
  const std::uint32_t flags[] = {DEIMG_JOB_FULL, DEIMG_JOB_QUICK, DEIMG_JOB_PREVIEW,
                                 DEIMG_JOB_THUMBNAIL};
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    BandsJob job;
    job.file = rawfile::Serialize(rawfile::RandomCamera(seed, {.previewable = seed % 4 >= 2}));
    job.flags = flags[seed % 4];
    job.format = seed % 3 == 0 ? DEIMG_FORMAT_16BIT : DEIMG_FORMAT_8BIT;
    if (seed % 5 == 0) job.params.wbPreset = DEIMG_WB_POINT;
    if (seed % 7 == 0) job.params.matrixSelect = 1;
    job.params.exposureAdjust = static_cast<std::int16_t>(seed % 9 == 0 ? 7 : 0);
    job.params.chromaMedian = static_cast<std::int16_t>(seed % 2 == 0 ? -1 : 0);
    const Trace alone = job.Run(kOneThread);
    EXPECT_EQ(alone.outcome.result, DEIMG_OK);
    for (const ThreadPlan& plan : {Threads(2, 2), Threads(2, 7), Threads(3, 5), Threads(7, 4)}) {
      EXPECT_TRUE(job.Run(plan) == alone)
          << plan.threads << " threads, bands of " << plan.bandLines;
    }
  }
  EXPECT_GT(helpers.bands, 300);
}

/// Coded data longer than the input's buffer: the host is called while helpers are at work.
rawfile::RawFile CameraReadInPortions() {
  rawfile::RawFile camera = rawfile::RandomCamera(9, {.minWidth = 120, .minHeight = 90});
  camera.properties.decoder.dataSkip1 = 63000;
  camera.properties.decoder.dataSkip2 = 0;
  camera.properties.sensor.area = {0, 0, static_cast<std::uint16_t>(camera.plane.width - 1),
                                   static_cast<std::uint16_t>(camera.plane.height - 1)};
  return camera;
}

/// This is also how a host cancels.
TEST(BandsTest, SameFailureAtEveryCall) {
  Helpers helpers;
  BandsJob job{.file = rawfile::Serialize(CameraReadInPortions())};
  const int calls = static_cast<int>(job.Run(kOneThread).calls.size());
  EXPECT_GT(calls, 100);
  for (int n = 1; n <= calls; ++n) {
    job.atCall = [n](int call, DevelopParams&) { return call == n ? 0xBADC0DEu : 0u; };
    EXPECT_TRUE(job.Run(Threads(3, 4)) == job.Run(kOneThread)) << "call " << n;
  }
  EXPECT_GT(helpers.bands, 200);
}

TEST(BandsTest, SettingsThatTheHostChangesMeanwhile) {
  Helpers helpers;
  BandsJob job{.file = rawfile::Serialize(CameraReadInPortions())};
  const Trace asGiven = job.Run(kOneThread);
  const int calls = static_cast<int>(asGiven.calls.size());
  const auto lastRead =
      std::find(asGiven.calls.rbegin(), asGiven.calls.rend(), static_cast<int>(Op::kRead));
  const int changeAt = calls - static_cast<int>(lastRead - asGiven.calls.rbegin());
  job.atCall = [&](int call, DevelopParams& params) {
    if (call == changeAt) {
      Helpers::WaitForOne();
      params.exposureAdjust = -9;
    }
    return 0u;
  };
  const Trace alone = job.Run(kOneThread);
  EXPECT_TRUE(alone.outcome.lines != asGiven.outcome.lines);
  EXPECT_TRUE(job.Run(Threads(3, 4)) == alone);
  EXPECT_GT(helpers.bands, 0);
}

TEST(BandsTest, HelpersThatCannotBeHad) {
  const BandsJob job{.file = rawfile::Serialize(SmallCamera(3)), .format = DEIMG_FORMAT_16BIT};
  const Trace alone = job.Run(kOneThread);
  Helpers helpers;
  for (int number = 1; number <= 3; ++number) {
    helpers.refuseFrom = number;
    helpers.bands = 0;
    EXPECT_TRUE(job.Run(Threads(3, 4)) == alone);
    EXPECT_TRUE(number > 1 || helpers.bands == 0);
  }
  // Memory of the helpers, down to none; a graph takes some fifty allocations.
  for (int n = 1; n < 70; ++n) {
    helpers.heap = {.failAt = n, .andAllAfter = n % 2 == 0};
    helpers.bands = 0;
    EXPECT_TRUE(job.Run(Threads(3, 4)) == alone) << "allocation " << n;
    EXPECT_TRUE(n > 40 || helpers.bands == 0) << n;
  }
}

/// The job's own memory: the same failures, and one more allocation without which it goes alone.
TEST(BandsTest, MemoryOfTheJob) {
  Helpers helpers;
  const BandsJob job{.file = rawfile::Serialize(SmallCamera(3))};
  const Trace whole = job.Run(kOneThread);
  const auto failures = [&](const ThreadPlan& plan) {
    int failed = 0;
    std::int64_t n = 1;
    for (bool reached = true; reached; ++n) {
      const Trace trace = job.Run(plan, {.failAt = n});
      reached = FaultScope::Allocations() >= n;
      failed += trace.outcome.result != DEIMG_OK ? 1 : 0;
      EXPECT_TRUE(trace.outcome.result != DEIMG_OK || trace == whole) << n;
    }
    return std::pair{failed, n};
  };
  const auto [failed, last] = failures(kOneThread);
  EXPECT_EQ(failures(Threads(3, 4)), (std::pair{failed, last + 1}));
  EXPECT_GT(failed, 50);
}

TEST(BandsTest, LinesThatGoOnFromTheLineBeforeAreOneThreads) {
  Helpers helpers;
  for (const int filter : {5, 3}) {
    rawfile::RawFile camera = SmallCamera(3);
    camera.properties.processingSet = 0;
    for (DetailTuning& details : camera.properties.tuning.details) {
      details.vApcFilter = static_cast<std::int16_t>(filter);
    }
    const BandsJob job{.file = rawfile::Serialize(camera)};
    helpers.bands = 0;
    EXPECT_TRUE(job.Run(Threads(3, 2)) == job.Run(kOneThread));
    EXPECT_EQ(helpers.bands > 0, filter == 5);
  }
}

TEST(BandsTest, ThreadsOfTheEnvironment) {
  EXPECT_EQ(ThreadCountOf("1"), 1);
  EXPECT_EQ(ThreadCountOf("64"), 64);
  EXPECT_GE(ThreadCountOf("all"), 1);
  EXPECT_EQ(ThreadCountOf("0"), ThreadCountOf("all"));
  for (const char* nonsense : {"", "65", "-1", "+2", " 2", "2x", "many", "99999999999"}) {
    EXPECT_EQ(ThreadCountOf(nonsense), 0) << nonsense;
  }
  const auto file = ReadFileBytes(DEIMG_SAMPLES "/landscape.raw");
  const auto threadsOf = [&](const char* value, std::uint32_t flags) {
    setenv("DEIMG_THREADS", value, 1);
    std::atomic<int> threads{0};
    const BandEventScope scope([&](BandMoment moment, int) {
      threads += moment == BandMoment::kThreadStarts ? 1 : 0;
      return true;
    });
    EXPECT_EQ(Develop(file, flags, DEIMG_FORMAT_8BIT).result, DEIMG_OK);
    unsetenv("DEIMG_THREADS");
    return threads.load();
  };
  EXPECT_EQ(threadsOf("3", DEIMG_JOB_QUICK), 2);
  EXPECT_EQ(threadsOf("3", DEIMG_JOB_PREVIEW), 0) << "too small";
  EXPECT_EQ(threadsOf("3 ", DEIMG_JOB_QUICK), 0);
}

}  // namespace
}  // namespace deimg::testing
