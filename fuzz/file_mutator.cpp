#include "file_mutator.h"

#include <algorithm>
#include <random>
#include <utility>

namespace deimg::fuzz {
namespace {

/// Numbers from 0 to `count` - 1.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) { engine_.discard(2); }
  std::size_t operator()(std::size_t count) { return engine_() / 8 % count; }

 private:
  std::minstd_rand engine_;
};

void ChangeWord(FileParts& file, Dice& dice, Entry& property) {
  constexpr std::uint16_t kValues[] = {0, 1, 2, 3, 4, 16, 32, 128, 1024, 0x7FFF, 0x8000, 0xFFFF};
  const std::size_t index = dice(property.bytes.size() / 2);
  const std::size_t before = file.Word(property, index);
  const std::size_t values[] = {kValues[dice(std::size(kValues))],
                                before ^ std::size_t{1} << dice(16), before + 8 - dice(17),
                                dice(65536)};
  file.PutWord(property, index, values[dice(std::size(values))]);
}

bool ChangeEntries(FileParts& file, Dice& dice) {
  const std::vector<Place> places = file.Places();
  if (places.empty()) return false;
  const Place place = places[dice(places.size())];
  Entry& chosen = place.entry();
  const std::size_t kind = dice(12);
  if (kind < 2) {  // duplicate or move
    Entry copy = chosen;
    if (kind == 1) place.heap->erase(place.at());
    const std::vector<Place> left = file.Places();
    const Place to = left.empty() ? Place{&file.top, 0} : left[dice(left.size())];
    to.heap->insert(to.at(), std::move(copy));
  } else if (kind == 2) {
    place.heap->erase(place.at());
  } else if (kind == 3) {  // reorder
    std::swap(chosen, (*place.heap)[dice(place.heap->size())]);
  } else if (kind == 4) {  // wrap in a sub-heap
    const std::size_t tag = 0x2000 + 0x800 * dice(3) + dice(0x800);
    chosen = Entry{static_cast<std::uint16_t>(tag), {}, {Entry(chosen)}, true};
  } else if (kind == 5) {  // another size
    chosen.bytes.resize(dice(2 * chosen.bytes.size() + 2));
    chosen.isHeap = false;
  } else if (kind == 6) {  // another place or type
    chosen.tag ^= static_cast<std::uint16_t>(0x800u << dice(5));
  } else if (!chosen.isHeap && chosen.bytes.size() >= 2) {
    ChangeWord(file, dice, chosen);
  } else {
    return false;
  }
  return true;
}

bool ChangeBlocks(std::vector<Block>& blocks, Dice& dice) {
  if (blocks.empty()) return false;
  const std::size_t index = dice(blocks.size());
  const auto at = blocks.begin() + static_cast<std::ptrdiff_t>(index);
  Symbol& symbol = (*at)[dice(at->size())];
  const std::size_t kind = dice(8);
  if (kind == 0) {
    blocks.erase(at);
  } else if (kind == 1) {
    blocks.insert(at, Block(*at));
  } else if (kind == 2) {
    at->insert(at->begin() + 1, Symbol(symbol));
  } else if (kind == 3 && at->size() > 1) {
    at->pop_back();
  } else if (kind < 6) {
    symbol.code = static_cast<std::uint8_t>(dice(16) << 4 | dice(11));
  } else {
    symbol.difference = static_cast<std::uint32_t>(dice(65536));
  }
  return true;
}

/// Another size, area, code set or number of skipped bytes; the data follow.
bool ChangeGeometry(FileParts& file, Dice& dice) {
  const std::size_t kind = dice(4);
  const std::size_t lowWord = file.bigEndian ? 1 : 0;
  if (kind == 0) {  // width and height, and the area to the edges
    for (const std::size_t i : {1u, 2u}) {
      const std::size_t size = 2 + 2 * dice(48);
      file.PutWord(*file.sensor, i, size);
      file.PutWord(*file.sensor, i + 4, 0);
      file.PutWord(*file.sensor, i + 6, size - 1);
    }
    if (!file.FindLayout()) return false;
    if (!file.blocks.empty()) file.blocks.resize(file.samples / 64, Block(file.blocks.back()));
  } else if (kind == 1) {
    file.PutWord(*file.sensor, 5 + dice(4), dice(64));
  } else if (kind == 2) {
    file.PutWord(*file.decoder, lowWord, dice(4));
  } else {
    file.PutWord(*file.decoder, 2 + 2 * dice(2) + lowWord, dice(300));
  }
  return true;
}

/// False when there is nothing of the kind that the dice say.
bool Change(FileParts& file, Dice& dice) {
  const std::size_t kind = dice(10);
  if (kind < 3) return ChangeBlocks(file.blocks, dice);
  if (kind < 4) return ChangeGeometry(file, dice);
  if (kind < 9) return ChangeEntries(file, dice);
  file.layout = {dice(2) != 0, dice(2) != 0, static_cast<std::uint32_t>(dice(4))};
  return true;
}

}  // namespace

bool MutateFile(const Pieces& file, std::uint32_t seed, SplitFile& mutated) {
  Dice dice(seed);
  FileParts parts;
  return parts.Read(file) && Change(parts, dice) && parts.Write(mutated);
}

}  // namespace deimg::fuzz
