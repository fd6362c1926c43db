// A host in C++: cpp_host RAW PICTURE writes the developed picture as PPM.
#include <cstdio>
#include <deimg/streams.hpp>
#include <fstream>

namespace host = deimg::host;

int main(int, char** argv) try {
  host::FileInput file(argv[1]);
  int last = -1, lines = 0;
  host::Options options;
  options.progress = [&](int percent) { last = percent; };
  const host::Picture picture = host::Develop(file, options);
  std::ofstream ppm(argv[2], std::ios::binary);
  ppm << "P6\n" << picture.lineBytes / 3 << ' ' << picture.lines() << "\n255\n";
  ppm.write(reinterpret_cast<const char*>(picture.samples.data()),
            static_cast<std::streamsize>(picture.samples.size()));

  // An exception of a callback ends the job and comes out of it.
  try {
    host::Develop(file, {}, [&](std::span<const std::byte>) { throw ++lines; });
  } catch (int thrown) {
    return ppm.flush() && last == 100 && thrown == 1 && lines == 1 ? 0 : 1;
  }
  return 1;
} catch (const host::Error& error) {
  std::fprintf(stderr, "cpp_host: %s\n", error.what());
  return 1;
}
