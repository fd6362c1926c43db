// A whole file through the exported function: recipe, filler, then the file's other bytes.
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
