// A host that is measured from outside: bench/counts and bench/against run it.
//   deimg_host levels                        compiler and name of each level that can run here
//   deimg_host count FILE JOB [LIBRARY]      one job; prints the number of its pixels
//   deimg_host compare FILE JOB RUNS OLD NEW the same job of two shared libraries by turns
// Without a LIBRARY, jobs are those of the library linked in, at the level of DEIMG_BENCH_LEVEL.
#include <dlfcn.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string_view>

#include <deimg/streams.hpp>
#include "pipeline/levels.h"

namespace deimg::bench {
namespace {

using Develop = decltype(&DEImg_DevelopM480);
using Bytes = std::span<const std::byte>;

constexpr std::uint32_t kRefused = 0x7D000100;  // by the output's Open

struct JobKind {
  std::string_view name;
  DEImgJob flags;
  std::uint32_t ending = DEIMG_OK;
};

/// "decode" is a full development whose output refuses to be opened: properties, plane, black
/// levels and tables, but no line. It needs nothing but the exported function.
constexpr JobKind kJobs[] = {{"full", DEIMG_JOB_FULL},
                             {"quick", DEIMG_JOB_QUICK},
                             {"preview", DEIMG_JOB_PREVIEW},
                             {"thumbnail", DEIMG_JOB_THUMBNAIL},
                             {"decode", DEIMG_JOB_FULL, kRefused}};

const JobKind& JobOf(std::string_view name) {
  for (const JobKind& job : kJobs) {
    if (job.name == name) return job;
  }
  throw std::runtime_error("there is no job '" + std::string(name) + "'");
}

std::vector<char> ReadFile(const char* path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error(std::string(path) + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// A shared library's exported function. The library stays loaded, and sees no other's symbols.
Develop Load(const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  void* const found = library != nullptr ? dlsym(library, "DEImg_DevelopM480") : nullptr;
  if (found == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Develop>(found);
}

void Run(Develop develop, Bytes file, const JobKind& job, host::LineCallback onLine) {
  host::MemoryInput input(file);
  host::LineOutput output(std::move(onLine));
  output.stream()->progressMode = DEIMG_PROGRESS_NEVER;
  if (job.ending == kRefused) {
    output.stream()->Open = [](void*, std::uint16_t, std::uint32_t* error) { *error = kRefused; };
  }
  DevelopParams settings = host::AsRecorded();
  const std::uint32_t code =
      develop(input.stream(), job.flags, DEIMG_FORMAT_8BIT, &settings, output.stream());
  if (code != job.ending) throw host::Error(code);
}

void PrintLevels() {
#if defined(__clang__)
  const auto compiler = "clang " + std::to_string(__clang_major__);
#else
  const auto compiler = "gcc " + std::to_string(__GNUC__);
#endif
  for (const Level& level : Levels()) {
    if (&BestLevel(level.name) == &level) std::printf("%s\t%s\n", compiler.c_str(), level.name);
  }
}

void Count(Develop develop, Bytes file, const JobKind& job) {
  std::size_t bytes = 0;
  Run(develop, file, job, [&](Bytes line) { bytes += line.size(); });
  std::printf("%zu\n", bytes / 3);
}

/// A hash of a job's lines.
std::uint64_t HashOf(Develop develop, Bytes file, const JobKind& job) {
  std::uint64_t hash = 0xCBF29CE484222325u;
  Run(develop, file, job, [&](Bytes line) {
    for (const std::byte byte : line) {
      hash = (hash ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001B3u;
    }
  });
  return hash;
}

double Now(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Prints the hashes of both pictures, then a line for every run: seconds that passed and seconds
/// of processor time, of the old and of the new library. The first of a run is the last of the
/// next.
void Compare(Bytes file, const JobKind& job, int runs, const char* oldPath, const char* newPath) {
  const Develop libraries[] = {Load(oldPath), Load(newPath)};
  for (const Develop develop : libraries) {  // everything in place from here on
    std::printf("%016llx\t", static_cast<unsigned long long>(HashOf(develop, file, job)));
  }
  std::printf("\n");
  for (int run = 0; run < runs; ++run) {
    double passed[2], used[2];
    for (int turn = 0; turn < 2; ++turn) {
      const int which = (run + turn) % 2;
      const double start = Now(CLOCK_MONOTONIC), startUsed = Now(CLOCK_PROCESS_CPUTIME_ID);
      Run(libraries[which], file, job, {});
      used[which] = Now(CLOCK_PROCESS_CPUTIME_ID) - startUsed;
      passed[which] = Now(CLOCK_MONOTONIC) - start;
    }
    std::printf("%.9f\t%.9f\t%.9f\t%.9f\n", passed[0], used[0], passed[1], used[1]);
  }
}

bool RunCommand(std::span<char* const> words) {
  const std::string_view command = words.size() > 1 ? words[1] : "";
  if (command == "levels" && words.size() == 2) {
    PrintLevels();
    return true;
  }
  const bool counts = command == "count" && (words.size() == 4 || words.size() == 5);
  const bool compares = command == "compare" && words.size() == 7;
  if (!counts && !compares) return false;
  const std::vector<char> file = ReadFile(words[2]);
  const JobKind& job = JobOf(words[3]);
  if (counts) {
    Count(words.size() == 5 ? Load(words[4]) : DEImg_DevelopM480, std::as_bytes(std::span(file)),
          job);
  } else {
    Compare(std::as_bytes(std::span(file)), job, std::atoi(words[4]), words[5], words[6]);
  }
  return true;
}

}  // namespace
}  // namespace deimg::bench

int main(int argc, char** argv) try {
  if (deimg::bench::RunCommand({argv, static_cast<std::size_t>(argc)})) return 0;
  std::fputs("deimg_host: wrong use, see bench/host.cpp\n", stderr);
  return 2;
} catch (const std::exception& error) {
  std::fprintf(stderr, "deimg_host: %s\n", error.what());
  return 1;
}
