// Several jobs at the same time: in threads, and one inside another.
#include <gtest/gtest.h>

#include <thread>

#include "support/job_kinds.h"
#include "support/temporary_directory.h"

namespace deimg::testing {
namespace {

/// A file, a kind of job, and the lines that come of them.
struct Work {
  std::vector<std::uint8_t> file;
  JobKind kind;
  Outcome alone;

  Outcome Run(bool inFile) const {
    return RunJob(kind, file, inFile ? PlaneInFile() : HeapFaults{});
  }
};

class ThreadsTest : public ::testing::Test {
 protected:
  ThreadsTest() {
    for (std::size_t i = 0; i < 8; ++i) {
      const JobKind& kind = kJobKinds[i % std::size(kJobKinds)];
      work_.push_back({rawfile::Serialize(SmallCamera(40 + i)), kind, {}});
      work_[i].alone = work_[i].Run(false);
      EXPECT_EQ(work_[i].alone.result, DEIMG_OK);
    }
  }

  /// Does all the work four times, in an order of its own; the number of wrong outcomes.
  int Worker(std::size_t number) const {
    int wrong = 0;
    for (std::size_t i = 0; i < 4 * work_.size(); ++i) {
      const Work& one = work_[(i + 3 * number) % work_.size()];
      wrong += one.Run((i / work_.size() + number) % 2 == 0) == one.alone ? 0 : 1;
    }
    return wrong;
  }

  TemporaryDirectory temporary_;
  std::vector<Work> work_;
};

TEST_F(ThreadsTest, FourThreads) {
  int wrong[4] = {};
  {
    std::vector<std::jthread> threads;
    for (std::size_t t = 0; t < 4; ++t) threads.emplace_back([&, t] { wrong[t] = Worker(t); });
  }
  for (const int count : wrong) EXPECT_EQ(count, 0);
  EXPECT_TRUE(temporary_.IsEmpty());
}

TEST_F(ThreadsTest, OneInsideAnother) {
  const Work& outer = work_[0];
  const Work& inner = work_[5];
  int nested = 0;
  OutputStream output(DEIMG_PROGRESS_ALL, [&](Op, int n) {
    nested += inner.Run(n % 2 == 0) == inner.alone ? 1 : -1000;
    return 0u;
  });
  InputStream input(outer.file);
  EXPECT_EQ(RunJob(outer.kind, input, output), DEIMG_OK);
  EXPECT_EQ(output.lines, outer.alone.lines);
  EXPECT_GT(nested, 8);
}

}  // namespace
}  // namespace deimg::testing
