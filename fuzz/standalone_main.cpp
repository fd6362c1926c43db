// Runs a target without a fuzzer, on every file and every file of every directory that is named.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::size_t runs = 0;

void Run(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Run(entry.path());
    return;
  }
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> text{std::istreambuf_iterator<char>(file), {}};
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  ++runs;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) Run(argv[i]);
  std::printf("%zu runs\n", runs);
  return runs == 0;
}
