// The temporary file under attack: full disks, vanished and hostile directories, stolen names.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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
  // Left as it is, the signal of the limit would end the process.
  struct sigaction action {};
  sigset_t before, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
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
  sigaction(SIGXFSZ, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&after, SIGXFSZ), sigismember(&before, SIGXFSZ));
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
}

TEST_F(TemporaryFilesTest, UnusableDirectories) {
  {
    const auto file = file_;
    const int lowest = dup(0);
    close(lowest);
    const Limit noDescriptorLeft(RLIMIT_NOFILE, static_cast<std::size_t>(lowest));
    ExpectCodes(file, DEIMG_FILE_NOT_OPEN, DEIMG_NO_WORK_FILE);
    // One is left: the reduction goes position by position.
    const Limit oneLeft(RLIMIT_NOFILE, static_cast<std::size_t>(lowest) + 1);
    EXPECT_EQ(RunJob(kJobKinds[2], file, HeapFaults{}).lines, expected_[2]);
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

/// Calls function(descriptor) for every work file that the process has open.
template <typename Function>
void ForEachWorkFile(Function function) {
  std::vector<int> found;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry.path(), gone).string().find("/_dv") == std::string::npos) continue;
    found.push_back(std::stoi(entry.path().filename()));
  }
  std::ranges::for_each(found, function);
}

/// At every call of the host's streams the work files have no name, belong to the owner alone and
/// are not handed on to other programs; whatever the umask, and also when the directory goes away.
TEST_F(TemporaryFilesTest, NobodyElseCanReachThem) {
  for (const mode_t mask : {0000u, 0277u, 0777u}) {
    for (std::size_t k = 0; k < std::size(kJobKinds); ++k) {
      const mode_t before = umask(mask);
      int seen = 0;
      bool removed = false;
      const Fault look = [&](Op, int) {
        ForEachWorkFile([&](int fd) {
          struct stat status {};
          EXPECT_EQ(fstat(fd, &status), 0);
          EXPECT_EQ(status.st_nlink, 0u);
          EXPECT_EQ(status.st_mode & 07777, 0600u & ~mask);
          EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
          ++seen;
        });
        EXPECT_TRUE(removed || temporary_.IsEmpty());
        // Nothing is made in it any more once the reduction has its files.
        if (seen > 0 && !IsReduced(kJobKinds[k])) removed = fs::remove(directory_) || removed;
        return 0u;
      };
      const Outcome outcome = Run(kJobKinds[k], look, look);
      umask(before);
      if (removed) fs::create_directory(directory_);
      EXPECT_EQ(outcome.lines, expected_[k]);
      EXPECT_GT(seen, 10);
    }
  }
}

TEST_F(TemporaryFilesTest, FirstDescriptorIsAsGoodAsAny) {
  const int kept = dup(0);
  close(0);
  for (std::size_t k = 0; k < std::size(kJobKinds); ++k) {
    EXPECT_EQ(Run(kJobKinds[k]).lines, expected_[k]);
    EXPECT_EQ(fcntl(0, F_GETFD), -1) << "left open";
  }
  dup2(kept, 0);
  close(kept);
}

TEST_F(TemporaryFilesTest, KilledProcessLeavesNothing) {
  const pid_t child = fork();
  if (child == 0) {
    Run(kJobKinds[0], {}, [](Op, int) { return kill(getpid(), SIGKILL), 0u; });
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(temporary_.IsEmpty());
}

/// A plane that ends too early is an error wherever it is read, never a wrong picture.
TEST_F(TemporaryFilesTest, ShortPlane) {
  const auto cutAt = [&](Op wanted, int call) -> Fault {
    return [=, this](Op op, int n) {
      if (op != wanted || n != call) return 0u;
      ForEachWorkFile(
          [&](int fd) { EXPECT_EQ(ftruncate(fd, static_cast<off_t>(planeBytes_) - 2), 0); });
      return 0u;
    };
  };
  for (std::size_t k = 0; k < std::size(kJobKinds); ++k) {
    // Decoded, and then its last sample gone: before the black levels, or before the graph.
    EXPECT_EQ(Run(kJobKinds[k], cutAt(Op::kClose, 2)).result, DEIMG_FILE_READ);
    const Outcome late = Run(kJobKinds[k], {}, cutAt(Op::kOpen, 1));
    EXPECT_EQ(late.result, IsReduced(kJobKinds[k]) ? DEIMG_OK : DEIMG_FILE_READ);
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
    platform::FileHandle file = platform::kInvalidFile;
    EXPECT_EQ(platform::CreateWorkFile(taken.c_str(), file), platform::CreateOutcome::kNameTaken);
  }
  EXPECT_EQ(fs::file_size(victim), 8u);
  EXPECT_FALSE(fs::exists(directory_ + "/nowhere"));

  fs::remove(nameOf(0xABC));
  EXPECT_EQ(Run(kJobKinds[0]).lines, expected_[0]);
  EXPECT_EQ(TemporaryFilesIn(directory_).size(), 65535u);
}

}  // namespace
}  // namespace deimg::testing
