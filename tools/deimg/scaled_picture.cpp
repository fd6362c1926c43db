#include "scaled_picture.hpp"

#include <algorithm>

namespace deimg::cli {
namespace {

/// The part of a source line or column that goes into one target pixel. Positions are counted in
/// units of 1 / `to` source pixels, so that everything stays in integers.
struct Span {
  uint64_t first;
  uint64_t last;  // exclusive
};

Span SpanOf(uint64_t target, uint64_t from) { return {target * from, (target + 1) * from}; }

/// How much of source pixel `i`, `to` units long, lies in the span.
uint64_t Covered(const Span& span, uint64_t i, uint64_t to) {
  return std::min(span.last, (i + 1) * to) - std::max(span.first, i * to);
}

}  // namespace

PictureSize FitInto(PictureSize size, uint32_t box) {
  const uint32_t longest = std::max(size.width, size.height);
  if (longest <= box) return size;
  const auto scaled = [&](uint64_t edge) {
    return static_cast<uint32_t>(std::max<uint64_t>(1, (edge * box + longest / 2) / longest));
  };
  return {scaled(size.width), scaled(size.height)};
}

std::vector<std::byte> ScaleDown(std::span<const std::byte> samples, PictureSize from,
                                 PictureSize to) {
  std::vector<std::byte> result;
  result.reserve(size_t{to.width} * to.height * 3);
  const uint64_t area = std::max<uint64_t>(1, uint64_t{from.width} * from.height);
  for (uint64_t y = 0; y < to.height; ++y) {
    const Span rows = SpanOf(y, from.height);
    for (uint64_t x = 0; x < to.width; ++x) {
      const Span columns = SpanOf(x, from.width);
      uint64_t sums[3] = {};
      for (uint64_t v = rows.first / to.height; v * to.height < rows.last; ++v) {
        for (uint64_t u = columns.first / to.width; u * to.width < columns.last; ++u) {
          const uint64_t weight = Covered(rows, v, to.height) * Covered(columns, u, to.width);
          const std::byte* const pixel = samples.data() + (v * from.width + u) * 3;
          for (int c = 0; c < 3; ++c) sums[c] += weight * std::to_integer<uint64_t>(pixel[c]);
        }
      }
      for (const uint64_t sum : sums) {
        result.push_back(static_cast<std::byte>((sum + area / 2) / area));
      }
    }
  }
  return result;
}

}  // namespace deimg::cli
