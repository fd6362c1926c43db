// What the exported function makes of its arguments, reports and settings.
#include <gtest/gtest.h>

#include "api/thumbnail.h"
#include "pipeline/development.h"
#include "pipeline/levels.h"
#include "support/streams.h"

namespace deimg {
namespace {

using testing::Develop;
using testing::InputStream;
using testing::Op;
using testing::OutputStream;
using Bytes = std::vector<std::uint8_t>;

Bytes Coffee() { return testing::ReadFileBytes(DEIMG_SAMPLES "/coffee.raw"); }

TEST(Job, ChecksItsArgumentsInOrder) {
  InputStream input({});
  OutputStream output;
  const auto develop = [](CallerStream* in, std::uint32_t flags, std::uint32_t format,
                          CallerStream* out) {
    return DEImg_DevelopM480(in, flags, format, nullptr, out);
  };
  EXPECT_EQ(develop(nullptr, 1, 5, nullptr), DEIMG_MISSING);
  EXPECT_EQ(develop(input.get(), 1, 5, nullptr), DEIMG_UNSUPPORTED);
  EXPECT_EQ(develop(input.get(), 0x120, 0x104, nullptr), DEIMG_BAD_REQUEST);
  EXPECT_EQ(develop(input.get(), 0x20, 0x107, nullptr), DEIMG_MISSING);
  EXPECT_TRUE(output.reports.empty());
  EXPECT_EQ(develop(input.get(), 0, 4, output.get()), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(output.reports, (std::vector<int>{1}));
  EXPECT_EQ(output.openMode, 0);
  CallerStream lacking = *input.get();
  lacking.Tell = nullptr;
  EXPECT_EQ(develop(&lacking, 0, 4, output.get()), DEIMG_MISSING);
}

TEST(Job, LooksAtProgressWheneverItReports) {
  const Bytes file = Coffee();
  // A host may take its Progress away, or first give it, at any call.
  for (const std::uint32_t flags : {0u, 0x100u, 0x200u}) {
    for (const Op at : {Op::kOpen, Op::kWrite, Op::kProgress}) {
      for (const bool gives : {false, true}) {
        InputStream input(file);
        decltype(CallerStream::Progress) progress = nullptr;
        CallerStream* stream = nullptr;
        OutputStream output(DEIMG_PROGRESS_ALL, [&](Op op, int n) {
          if (op == at && n == (op == Op::kOpen ? 1 : 2))
            stream->Progress = gives ? progress : nullptr;
          return 0u;
        });
        stream = output.get();
        progress = stream->Progress;
        if (gives) output.get()->Progress = nullptr;
        EXPECT_EQ(DEImg_DevelopM480(input.get(), flags, 4, nullptr, output.get()), DEIMG_OK);
        const bool last = !output.reports.empty() && output.reports.back() == 100;
        EXPECT_EQ(last, gives && at != Op::kProgress) << flags << static_cast<int>(at);
      }
    }
  }
}

TEST(Job, HasNarrowLinesWithNaturalFiles) {
  CallerStream plane{};
  for (const char* const name : {"/coffee.raw", "/landscape.raw", "/chart.raw"}) {
    InputStream input(testing::ReadFileBytes(std::string(DEIMG_SAMPLES) + name));
    ImagePropsBlock block;
    ImageProps props{};
    ASSERT_EQ(ReadImagePropsBlock(*input.get(), block), DEIMG_OK);
    ASSERT_EQ(pxfPsReadOpenImageProps(block, props), DEIMG_OK);
    const ImageGeometry geometry = DeriveGeometry(props.sensor);
    for (const int set : {DEIMG_AS_RECORDED, 0, 1, -1}) {
      for (int preset = 0; preset < DEIMG_WB_GAINS; ++preset) {
        for (const int level : {-1, 0, 1}) {
          DevelopParams params{};
          params.filled = 1;
          params.processingSet = static_cast<std::int16_t>(set);
          params.wbPreset = static_cast<std::int16_t>(preset);
          params.toneLevel = params.colourLevel = params.matrixLevel =
              static_cast<std::int16_t>(level);
          params.exposureAdjust = static_cast<std::int16_t>(20 * level);
          Development development;
          ASSERT_EQ(development.Derive(params, props), DEIMG_OK);
          const GraphOwner graph =
              ChosenLevel().code.makeNarrowGraph({plane}, development.ContextOf(geometry), 1);
          EXPECT_TRUE(graph->RangesFit()) << name << " set " << set << " preset " << preset;
        }
      }
    }
  }
}

TEST(Thumbnail, LetterboxesAndCuts) {
  const auto blackRows = [](int width, int height) {
    const Bytes picture(static_cast<std::size_t>(3 * width * height), 200);
    ThumbnailBuffer thumbnail;
    EXPECT_TRUE(thumbnail.Allocate());
    thumbnail.Resample(picture.data(), width, height);
    std::pair<int, int> bars{0, 0};
    const auto row = [&](int y) { return thumbnail.row(y)[0]; };
    while (bars.first < 120 && row(bars.first) == 0) ++bars.first;
    while (bars.second < 120 && row(119 - bars.second) == 0) ++bars.second;
    return bars;
  };
  EXPECT_EQ(blackRows(512, 340), (std::pair{7, 6}));
  EXPECT_EQ(blackRows(160, 120), (std::pair{0, 0}));
  EXPECT_EQ(blackRows(100, 400), (std::pair{0, 0})) << "taller than the thumbnail: cut";
  EXPECT_EQ(blackRows(3000, 2), (std::pair{60, 59})) << "a single row";
}

}  // namespace
}  // namespace deimg
