// A host in C++: cpp_host RAW PICTURE writes the developed picture as PPM, and checks on the way
// what the host helpers promise.
#include <cstdio>
#include <deimg/streams.hpp>
#include <fstream>
#include <iterator>

namespace host = deimg::host;

namespace {

void Require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

/// The code that `function` fails with; 0 when it does not.
template <typename Function>
uint32_t CodeOf(const Function& function) {
  try {
    function();
    return 0;
  } catch (const host::Error& error) {
    Require(error.what() == host::CodeText(error.code()), "an error's text is its code's");
    return error.code();
  }
}

std::vector<std::byte> Load(const char* name) {
  std::ifstream file(name, std::ios::binary);
  const std::vector<char> text{std::istreambuf_iterator<char>(file), {}};
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

void CheckFailures(std::vector<std::byte> bytes) {
  Require(CodeOf([] { host::FileInput("no such file"); }) == host::SystemErrorCode(ENOENT),
          "ENOENT");
  Require(CodeOf([] { host::FileInput("."); }) == host::SystemErrorCode(EISDIR), "EISDIR");

  host::MemoryInput short_({bytes.data(), bytes.size() / 2});
  Require(CodeOf([&] { host::Develop(short_); }) == DEIMG_PROPS_UNREADABLE, "half a file");

  host::MemoryInput whole(bytes);
  host::Options options;
  options.settings.wbPreset = DEIMG_WB_POINT;
  options.settings.wbPointX = -1;
  Require(CodeOf([&] { host::Develop(whole, options); }) == DEIMG_UNSUPPORTED, "point outside");

  const std::atomic<bool> cancel{true};
  options = {};
  options.cancel = &cancel;
  Require(CodeOf([&] { host::Develop(whole, options); }) == host::kCancelled, "cancelled");

  struct Mine {};
  int lines = 0;
  try {
    host::Develop(whole, {}, [&](std::span<const std::byte>) {
      if (++lines == 3) throw Mine();
    });
    Require(false, "an exception of a callback was lost");
  } catch (const Mine&) {
    Require(lines == 3, "the job went on after an exception");
  }
}

}  // namespace

int main(int, char** argv) try {
  const std::vector<std::byte> bytes = Load(argv[1]);
  CheckFailures(bytes);

  host::MemoryInput memory(bytes);
  host::FileInput file(argv[1]);
  int last = -1;
  host::Options options;
  options.progress = [&](int percent) { last = percent; };
  const host::Picture picture = host::Develop(memory, options);
  Require(last == 100, "progress ends at 100");
  Require(host::Develop(file).samples == picture.samples, "file and memory give one picture");
  Require(picture.settings.whiteBalance.wbGainsSet == 1, "the gains come back");
  options.format = DEIMG_FORMAT_16BIT;
  Require(host::Develop(file, options).lineBytes == 2 * picture.lineBytes, "16 bits");

  std::ofstream ppm(argv[2], std::ios::binary);
  ppm << "P6\n" << picture.lineBytes / 3 << ' ' << picture.lines() << "\n255\n";
  ppm.write(reinterpret_cast<const char*>(picture.samples.data()),
            static_cast<std::streamsize>(picture.samples.size()));
  return ppm.flush() ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "cpp_host: %s\n", error.what());
  return 1;
}
