// Writes the seed inputs of every target: make_corpus DIRECTORY
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "base_files.h"
#include "job.h"
#include "raw_file_input.h"

using namespace deimg::fuzz;
namespace rawfile = deimg::rawfile;

namespace {

constexpr std::size_t kHeaderBytes = 26;

template <typename T>
void Append(rawfile::Bytes& out, const T& value) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&value);
  out.insert(out.end(), bytes, bytes + sizeof(T));
}

void Save(const std::filesystem::path& directory, const std::string& name,
          const rawfile::Bytes& bytes) {
  std::filesystem::create_directories(directory);
  std::ofstream(directory / name, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

JobRecipe RecipeOf(std::uint64_t seed) {
  JobRecipe recipe{};
  recipe.job = static_cast<std::uint8_t>(seed);
  recipe.how = static_cast<std::uint8_t>(seed / 2);
  recipe.toneLevel = recipe.matrixLevel = recipe.processingSet = recipe.colourLevel =
      recipe.wbPreset = DEIMG_AS_RECORDED;
  if (seed % 5 == 0) recipe.wbPreset = DEIMG_WB_POINT;
  return recipe;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::filesystem::path root = argv[1];
  std::uint64_t pictures = 0;
  for (std::uint64_t seed = 0; seed < 2 * kBaseFiles; ++seed) {
    const std::string name = "seed" + std::to_string(seed);
    rawfile::RawFile camera = BaseFile(seed);
    const rawfile::Bytes file = rawfile::Serialize(camera);
    const rawfile::Bytes data =
        rawfile::EncodeSensorData(camera.plane, camera.properties.decoder, camera.coding);
    const std::size_t dataEnd = kHeaderBytes + data.size();

    // The padding behind the coded data is left to the target.
    std::size_t coded = dataEnd;
    while (coded > kHeaderBytes && file[coded - 1] == camera.coding.filler) --coded;
    const auto place = [&](std::size_t i) { return file.begin() + static_cast<std::ptrdiff_t>(i); };
    const Filler filler = Filler::Of(coded, dataEnd - coded, camera.coding.filler);
    rawfile::Bytes pieces(file.begin(), place(coded));
    pieces.insert(pieces.end(), place(dataEnd), file.end());
    pictures += RunJob(RecipeOf(seed), filler.Place(pieces)) == DEIMG_OK ? 1 : 0;
    rawfile::Bytes raw;
    Append(raw, RecipeOf(seed));
    Append(raw, filler);
    raw.insert(raw.end(), pieces.begin(), pieces.end());
    Save(root / "raw_file", name, raw);

    // Properties alone: a file whose top heap begins right behind the header.
    rawfile::ByteWriter alone(camera.order);
    alone.Append({file.data(), 2});
    alone.U32(kHeaderBytes);
    alone.Append(camera.header);
    alone.Append({file.data() + dataEnd, file.size() - dataEnd});
    Save(root / "properties", name, alone.Take());

    rawfile::Bytes tuning;
    Append(tuning, RecipeOf(seed));
    tuning.push_back(static_cast<std::uint8_t>(seed));
    if (seed >= kBaseFiles) {
      tuning.insert(tuning.end(), {0xFF, 0xFF, static_cast<std::uint8_t>(seed), 0});
    }
    Save(root / "tuning", name, tuning);

    // Code set, geometry, filler; the coded data begin at the end of the first read.
    const std::size_t lowBits = std::size_t{camera.plane.width} * camera.plane.height / 4;
    rawfile::Bytes decoder = {
        static_cast<std::uint8_t>(camera.properties.decoder.codeSet % 4 + seed % 2 * 128),
        static_cast<std::uint8_t>((camera.plane.width - 8) / 2),
        static_cast<std::uint8_t>(camera.plane.height - 2),
        0x1B,
        static_cast<std::uint8_t>(seed * 7),
        0,
        0};
    decoder.insert(decoder.end(), place(kHeaderBytes + lowBits),
                   place(std::max(coded, kHeaderBytes + lowBits)));
    Save(root / "decoder", name, decoder);
  }
  // The others are too small for the preview they ask for.
  Require(pictures > kBaseFiles, "seeds that develop");
  return 0;
}
