// The temporary file under attack: full disks, vanished and hostile directories, stolen names.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <optional>

#include "platform/platform.h"
#include "support/job_kinds.h"
#include "support/temporary_directory.h"

namespace deimg::testing {
namespace {

namespace fs = std::filesystem;

/// A limit of the process, until the end of the scope.
class Limit {
 public:
  Limit(decltype(RLIMIT_FSIZE) what, std::size_t most) : what_(what) {
    getrlimit(what_, &before_);
    const rlimit now{most, before_.rlim_max};
    setrlimit(what_, &now);
  }
  Limit(const Limit&) = delete;
  ~Limit() { setrlimit(what_, &before_); }

 private:
  decltype(RLIMIT_FSIZE) what_;
  rlimit before_{};
};

class TemporaryFilesTest : public ::testing::Test {
 protected:
  TemporaryFilesTest() {
    for (const JobKind& kind : kJobKinds) expected_.push_back(Run(kind).lines);
    EXPECT_TRUE(temporary_.IsEmpty());
  }

  /// With the plane in a file, and the reduction, if any, in four more.
  Outcome Run(const JobKind& kind, const Fault& atInput = {}, const Fault& atOutput = {}) {
    return RunJob(kind, file_, PlaneInFile(), atInput, atOutput);
  }

  /// Every kind of job fails, and leaves nothing; with the plane in memory, the reduction does.
  static void ExpectCodes(const std::vector<std::uint8_t>& file, std::uint32_t code,
                          std::uint32_t reductionCode) {
    for (const JobKind& kind : kJobKinds) {
      EXPECT_EQ(RunJob(kind, file, PlaneInFile()).result, code) << kind.name;
      EXPECT_EQ(RunJob(kind, file, HeapFaults{}).result, IsReduced(kind) ? reductionCode : 0u);
    }
  }

  const rawfile::RawFile camera_ = SmallCamera(11);
  const std::vector<std::uint8_t> file_ = rawfile::Serialize(camera_);
  const std::size_t planeBytes_ = 2 * camera_.plane.samples.size();
  const TemporaryDirectory temporary_;
  const std::string& directory_ = temporary_.path();
  std::vector<std::vector<std::vector<std::uint8_t>>> expected_;
};

TEST_F(TemporaryFilesTest, FullDisk) {
  std::signal(SIGXFSZ, SIG_IGN);
  for (const std::size_t room :
       {std::size_t{0}, std::size_t{1}, planeBytes_ / 2, planeBytes_ - 1}) {
    const Limit limit(RLIMIT_FSIZE, room);
    ExpectCodes(file_, DEIMG_FILE_WRITE, room < 2 ? DEIMG_FILE_WRITE : 0);
    EXPECT_TRUE(temporary_.IsEmpty());
  }
  const Limit limit(RLIMIT_FSIZE, planeBytes_);
  EXPECT_EQ(Run(kJobKinds[0]).lines, expected_[0]);
  // No room any more once the plane is decoded.
  std::optional<Limit> late;
  const auto afterDecoding = [&](Op op, int n) {
    if (op == Op::kClose && n == 2) late.emplace(RLIMIT_FSIZE, planeBytes_ / 2);
    return 0u;
  };
  EXPECT_EQ(Run(kJobKinds[0], afterDecoding).result, DEIMG_FILE_WRITE);
  EXPECT_TRUE(temporary_.IsEmpty());
}

TEST_F(TemporaryFilesTest, UnusableDirectories) {
  {
    const auto file = file_;
    const int lowest = dup(0);
    close(lowest);
    const Limit noDescriptorLeft(RLIMIT_NOFILE, static_cast<std::size_t>(lowest));
    ExpectCodes(file, DEIMG_FILE_NOT_OPEN, DEIMG_NO_WORK_FILE);
  }
  TemporaryDirectory::Use(directory_ + "/nowhere");
  ExpectCodes(file_, DEIMG_FILE_NOT_OPEN, DEIMG_NO_WORK_FILE);
  TemporaryDirectory::Use("/dev/null");
  ExpectCodes(file_, DEIMG_FILE_NOT_OPEN, DEIMG_NO_WORK_FILE);

  // "/", "_dv", one to four digits and ".tmp" follow; a path has at most 255 characters.
  for (const std::size_t length : {300u, 255u, 255u - 12}) {
    std::string path = directory_ + "/";
    while (path.size() < length) path += path.size() % 100 == 99 ? '/' : 'd';
    TemporaryDirectory::Use(path);
    if (length >= 255) {
      ExpectCodes(file_, DEIMG_NO_TEMPORARY_STREAM, DEIMG_NO_WORK_FILE);
    } else {
      fs::create_directories(path);
      EXPECT_EQ(Run(kJobKinds[0]).lines, expected_[0]);
      EXPECT_TRUE(fs::is_empty(path));
    }
  }
}

TEST_F(TemporaryFilesTest, BelongsToTheOwnerAlone) {
  const mode_t before = umask(0);
  int seen = 0;
  const Outcome outcome = Run(kJobKinds[0], {}, [&](Op, int) {
    for (const std::string& name : TemporaryFilesIn(directory_)) {
      EXPECT_EQ(fs::status(fs::path(directory_) / name).permissions(), fs::perms{0600});
      ++seen;
    }
    return 0u;
  });
  umask(before);
  EXPECT_EQ(outcome.lines, expected_[0]);
  EXPECT_GT(seen, 20);
}

/// At every call of the host's streams in turn, the file vanishes, or another takes its place.
TEST_F(TemporaryFilesTest, VanishesAtAnyMoment) {
  const fs::path victim = directory_ + "/victim";
  std::ofstream(victim) << "precious";
  for (std::size_t k = 0; k < 2 * std::size(kJobKinds); ++k) {
    const bool redirected = k % 2 != 0;
    int failures = 0;
    for (int moment = 1; moment < 40; ++moment) {
      int calls = 0;
      const Fault strike = [&](Op, int) {
        if (++calls != moment) return 0u;
        for (const std::string& name : TemporaryFilesIn(directory_)) {
          fs::remove(fs::path(directory_) / name);
          if (redirected) fs::create_symlink(victim, fs::path(directory_) / name);
        }
        return 0u;
      };
      const Outcome outcome = Run(kJobKinds[k / 2], strike, strike);
      // What is open already stays readable; what has to be opened again is gone.
      if (outcome.result == DEIMG_OK) {
        EXPECT_EQ(outcome.lines, expected_[k / 2]);
      } else {
        EXPECT_TRUE(outcome.result == DEIMG_NO_WORK_FILE || outcome.result == DEIMG_FILE_NOT_OPEN);
        ++failures;
      }
      EXPECT_EQ(fs::file_size(victim), 8u);
      EXPECT_EQ(std::distance(fs::directory_iterator(directory_), {}), 1) << "the victim only";
    }
    EXPECT_GT(failures, 0);
  }
}

TEST_F(TemporaryFilesTest, NamesThatAreTaken) {
  const auto nameOf = [&](unsigned number) {
    char name[16];
    std::snprintf(name, sizeof(name), "/_dv%X.tmp", number);
    return directory_ + name;
  };
  // Links to a file, links to nowhere, directories: nothing is opened, followed or deleted.
  const std::string victim = directory_ + "/victim";
  std::ofstream(victim) << "precious";
  for (unsigned i = 0; i < 65536; ++i) {
    const int failed = i % 3 == 2   ? mkdir(nameOf(i).c_str(), 0700)
                       : i % 3 == 1 ? symlink("nowhere", nameOf(i).c_str())
                                    : symlink(victim.c_str(), nameOf(i).c_str());
    ASSERT_EQ(failed, 0);
  }
  EXPECT_EQ(Run(kJobKinds[0]).result, DEIMG_NO_TEMPORARY_STREAM);
  EXPECT_EQ(RunJob(kJobKinds[2], file_, HeapFaults{}).result, DEIMG_NO_WORK_FILE);
  // Also when they appear between the search for a name and its use.
  for (const std::string& taken : {nameOf(0), nameOf(1), nameOf(2), victim}) {
    EXPECT_EQ(platform::CreateNewFile(taken.c_str()), platform::CreateOutcome::kNameTaken);
  }
  EXPECT_EQ(fs::file_size(victim), 8u);
  EXPECT_FALSE(fs::exists(directory_ + "/nowhere"));

  fs::remove(nameOf(0xABC));
  EXPECT_EQ(Run(kJobKinds[0]).lines, expected_[0]);
  EXPECT_EQ(TemporaryFilesIn(directory_).size(), 65535u);
}

}  // namespace
}  // namespace deimg::testing
