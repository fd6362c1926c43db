// Runs a target on every file named, and on every file of the directories named, without an engine.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& named) {
  if (!fs::is_directory(named)) return {named};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(named)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool Run(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
  if (!stream) {
    std::fprintf(stderr, "cannot be read: %s\n", file.c_str());
    return false;
  }
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int runs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : FilesOf(argv[i])) {
      if (!Run(file)) return 1;
      ++runs;
    }
  }
  std::printf("%d runs\n", runs);
  return runs > 0 ? 0 : 2;
}
