// A host of the library, as an application on Windows is one: it loads the library at run time,
// runs the calls of cases.tsv in a directory of reference vectors, and compares everything that
// comes back: host LIBRARY DIRECTORY
//
// On 32-bit x86 it is an inconsiderate host: it calls with a stack aligned to 4 bytes only and with
// x87 arithmetic cut to single precision.
#include <float.h>

#include <cstring>
#include <deimg/streams.hpp>
#include <fstream>
#include <iterator>
#include <sstream>

// After the streams.
#include <windows.h>

namespace {

using Develop = decltype(&DEImg_DevelopM480);

/// Calls with the stack `offset` bytes below a 16-byte boundary, 0 to 12.
std::uint32_t Call(Develop develop, unsigned offset, CallerStream* input, std::uint32_t flags,
                   std::uint32_t format, DevelopParams* params, CallerStream* output) {
#if defined(__i386__)
  const std::uint32_t arguments[] = {reinterpret_cast<std::uint32_t>(input), flags, format,
                                     reinterpret_cast<std::uint32_t>(params),
                                     reinterpret_cast<std::uint32_t>(output)};
  std::uint32_t result;
  __asm__ volatile(
      "movl %%esp, %%ebx\n\t"
      "andl $-16, %%esp\n\t"
      "subl %[offset], %%esp\n\t"
      "subl $12, %%esp\n\t"
      "pushl 16(%[arguments])\n\t"
      "pushl 12(%[arguments])\n\t"
      "pushl 8(%[arguments])\n\t"
      "pushl 4(%[arguments])\n\t"
      "pushl (%[arguments])\n\t"
      "call *%[develop]\n\t"
      "movl %%ebx, %%esp"
      : "=a"(result)
      : [develop] "0"(develop), [arguments] "S"(arguments), [offset] "D"(offset)
      : "ebx", "ecx", "edx", "memory", "cc");
  return result;
#else
  static_cast<void>(offset);
  return develop(input, flags, format, params, output);
#endif
}

/// Settings from 288 hexadecimal bytes.
DevelopParams FromHex(const std::string& text) {
  DevelopParams params;
  for (std::size_t i = 0; i < sizeof(params); ++i) {
    reinterpret_cast<unsigned char*>(&params)[i] =
        static_cast<unsigned char>(std::stoul(text.substr(2 * i, 2), nullptr, 16));
  }
  return params;
}

/// Runs the case whose twelve fields are given; what came of it, as the fields say it.
std::string Run(Develop develop, const std::string& directory,
                const std::vector<std::string>& field, unsigned offset) {
  std::ifstream wanted(directory + '/' + field[0] + ".out", std::ios::binary);
  unsigned lines = 0, wrong = 0;
  std::size_t lineBytes = 0;
  std::string reports;
  deimg::host::FileInput input(directory + '/' + field[1]);
  deimg::host::LineOutput output(
      [&](std::span<const std::byte> line) {
        std::string expected(line.size(), '\0');
        wanted.read(expected.data(), static_cast<std::streamsize>(line.size()));
        if (std::memcmp(expected.data(), line.data(), line.size()) != 0) ++wrong;
        lineBytes = line.size();
        ++lines;
      },
      [&](int percent) { reports += (reports.empty() ? "" : ",") + std::to_string(percent); });
  output.stream()->progressMode = static_cast<std::uint16_t>(std::stoul(field[4]));
  if (field[5] == "0") output.stream()->Progress = nullptr;
  const bool withParams = field[6] != "-";
  DevelopParams params = withParams ? FromHex(field[6]) : DevelopParams{};
  const std::uint32_t result =
      Call(develop, offset, input.stream(), std::stoul(field[2], nullptr, 16),
           std::stoul(field[3], nullptr, 16), withParams ? &params : nullptr, output.stream());
  std::ostringstream got;
  got << result << ' ' << lines << ' ' << (lines != 0 ? std::to_string(lineBytes) : field[9]) << ' '
      << (reports.empty() ? "-" : reports);
  if (wrong != 0) got << ", wrong lines: " << wrong;
  if (lines != 0 && wanted.peek() != EOF) got << ", lines are missing";
  if (withParams) {
    const DevelopParams after = FromHex(field[11]);
    if (std::memcmp(&params, &after, sizeof(params)) != 0) got << ", settings differ";
  }
  return got.str();
}

/// A crash just ends the host, without a debugger that somebody waits for.
LONG WINAPI Crashed(EXCEPTION_POINTERS* what) {
  std::printf("crashed: %08lX\n", what->ExceptionRecord->ExceptionCode);
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), 5);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "host LIBRARY DIRECTORY\n"), 2;
  SetUnhandledExceptionFilter(Crashed);
  const HMODULE library = LoadLibraryA(argv[1]);
  const FARPROC function =
      library != nullptr ? GetProcAddress(library, "DEImg_DevelopM480") : nullptr;
  if (function == nullptr) return std::fprintf(stderr, "%s: not the library\n", argv[1]), 2;
  Develop develop;
  std::memcpy(&develop, &function, sizeof(develop));
#if defined(__i386__)
  _controlfp(_PC_24, _MCW_PC);
#endif
  unsigned passed = 0, failed = 0;
  std::ifstream cases(std::string(argv[2]) + "/cases.tsv");
  for (std::string line; std::getline(cases, line);) {
    std::istringstream words(line);
    const std::vector<std::string> field{std::istream_iterator<std::string>(words), {}};
    if (field.size() != 12) continue;
    const std::string wanted = field[7] + ' ' + field[8] + ' ' + field[9] + ' ' + field[10];
    const std::string got = Run(develop, argv[2], field, 4 * ((passed + failed) % 4));
    if (got != wanted) std::printf("FAIL %s: %s\n", field[0].c_str(), got.c_str());
    ++(got == wanted ? passed : failed);
  }
  std::printf("vectors: %u passed, %u failed\n", passed, failed);
  return failed != 0 || passed == 0;
}
