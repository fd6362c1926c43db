// A whole file through the exported function: recipe, filler, then the file's other bytes.
#include "file_mutator.h"
#include "job.h"
#include "raw_file_input.h"

using namespace deimg::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input(data, size);
  JobRecipe recipe;
  Filler filler;
  if (!Take(input, recipe) || !Take(input, filler)) return 0;
  const Pieces file = filler.Place(input);
  if (!DeclaresLargePlane(file)) RunJob(recipe, file);
  return 0;
}

// The engine's; not every one has it.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,
                                                      std::size_t maxSize);

/// Half of the time bytes are changed as the engine does it, every fourth time those of the recipe
/// alone; else the file is taken apart.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  constexpr std::size_t kFront = sizeof(JobRecipe) + sizeof(Filler);
  if (seed % 2 != 0 && size > kFront) {
    Bytes input(data + sizeof(JobRecipe), size - sizeof(JobRecipe));
    Filler filler;
    SplitFile mutated;
    if (Take(input, filler) && MutateFile(filler.Place(input), seed / 2, mutated) &&
        kFront + mutated.bytes.size() <= maxSize) {
      std::memcpy(data + sizeof(JobRecipe), &mutated.filler, sizeof(Filler));
      std::copy(mutated.bytes.begin(), mutated.bytes.end(), data + kFront);
      return kFront + mutated.bytes.size();
    }
  }
  if (LLVMFuzzerMutate == nullptr) return size;
  if (seed % 8 == 0 && size > kFront) {
    LLVMFuzzerMutate(data, sizeof(JobRecipe), sizeof(JobRecipe));
    return size;
  }
  return LLVMFuzzerMutate(data, size, maxSize);
}
