// Writes a scene to a raw file: deimg_scene NAME WIDTH HEIGHT FILE
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "scene.h"

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: deimg_scene NAME WIDTH HEIGHT FILE\n", stderr);
    return 2;
  }
  const deimg::bench::Scene scene =
      deimg::bench::MakeScene(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
  std::ofstream file(argv[4], std::ios::binary);
  file.write(reinterpret_cast<const char*>(scene.file.data()),
             static_cast<std::streamsize>(scene.file.size()));
  file.close();
  return file ? 0 : 1;
}
