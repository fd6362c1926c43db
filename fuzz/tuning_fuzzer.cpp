// Valid files whose property words are changed: settings, geometry, tables and tuning.
#include <algorithm>
#include <random>
#include <vector>

#include "base/byte_order.h"
#include "base_files.h"
#include "job.h"

using namespace deimg::fuzz;
namespace rawfile = deimg::rawfile;

namespace {

/// A file and where its property words lie in it.
struct Base {
  rawfile::Bytes bytes;
  std::vector<std::size_t> words;
  std::size_t tuningStart;  // of the tuning block's words
};

Base Make(std::uint64_t seed) {
  const rawfile::RawFile file = BaseFile(seed);
  Base base{rawfile::Serialize(file), {}, 0};
  for (const std::uint16_t tag : rawfile::kPropertyTags) {
    const rawfile::Bytes record = rawfile::PropertyBytes(file.properties, tag, file.order);
    const auto at = std::search(base.bytes.begin(), base.bytes.end(), record.begin(), record.end());
    Require(at != base.bytes.end(), "the record in its file");
    if (tag == rawfile::kTagTuningBlock) base.tuningStart = base.words.size();
    for (std::size_t i = 0; i + 1 < record.size(); i += 2) {
      base.words.push_back(static_cast<std::size_t>(at - base.bytes.begin()) + i);
    }
  }
  return base;
}

std::vector<Base> MakeAll() {
  std::vector<Base> bases;
  for (std::uint64_t seed = 0; seed < kBaseFiles; ++seed) bases.push_back(Make(seed));
  return bases;
}

/// Two bytes of place, two of value. The highest place stands for a sixteenth of all tuning words,
/// drawn from the value, to reach combinations that single words do not.
struct Change {
  std::uint8_t place[2];
  std::uint8_t value[2];
};
constexpr unsigned kScatter = 0xFFFF;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<Base> bases = MakeAll();
  Bytes input(data, size);
  JobRecipe recipe;
  std::uint8_t which = 0;
  if (!Take(input, recipe) || !Take(input, which)) return 0;
  const Base& base = bases[which % kBaseFiles];
  rawfile::Bytes file = base.bytes;
  const auto put = [&](std::size_t word, const std::uint8_t* value) {
    std::copy_n(value, 2, file.begin() + static_cast<std::ptrdiff_t>(base.words[word]));
  };
  for (Change change; Take(input, change);) {
    const unsigned place = deimg::LoadU16(change.place, false);
    if (place != kScatter) {
      put(place % base.words.size(), change.value);
      continue;
    }
    std::minstd_rand random(1 + std::uint32_t{deimg::LoadU16(change.value, false)});
    for (std::size_t i = base.tuningStart; i < base.words.size(); ++i) {
      if (random() % 16 != 0) continue;
      const auto word = random();
      const std::uint8_t value[2] = {static_cast<std::uint8_t>(word >> 8),
                                     static_cast<std::uint8_t>(word >> 16)};
      put(i, value);
    }
  }
  const Pieces pieces{file, 0, 0, {}};
  if (!DeclaresLargePlane(pieces)) RunJob(recipe, pieces);
  return 0;
}
