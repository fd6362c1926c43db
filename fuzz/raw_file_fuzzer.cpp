// A whole file through the exported function: recipe, filler, then the file's other bytes.
#include <algorithm>

#include "file_mutator.h"
#include "job.h"
#include "raw_file_input.h"

using namespace deimg::fuzz;

extern "C" std::size_t __attribute__((weak))
LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// Half of the time the engine's own changes, else one that keeps the file consistent.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  Bytes input(data, size);
  JobRecipe recipe;
  Filler filler;
  FileParts parts;
  if (seed % 2 == 0 || !Take(input, recipe) || !Take(input, filler) ||
      !MutateFile(filler.Place(input), seed / 2, parts)) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  const std::size_t before = size - input.size();
  const std::size_t made = before + parts.front.size() + parts.heap.size();
  if (made > maxSize || parts.front.size() > 0xFFFF) return size;
  filler.SetHead(parts.front.size());
  std::memcpy(data + sizeof(recipe), &filler, sizeof(filler));
  std::ranges::copy(parts.heap, std::ranges::copy(parts.front, data + before).out);
  return made;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input(data, size);
  JobRecipe recipe;
  Filler filler;
  if (!Take(input, recipe) || !Take(input, filler)) return 0;
  const Pieces file = filler.Place(input);
  if (!DeclaresLargePlane(file)) RunJob(recipe, file);
  return 0;
}
