#include "props/image_props.h"

#include <array>
#include <iterator>

#include "base/byte_order.h"
#include "props/diagnostics.h"
#include "props/props_heap.h"
#include "storage/stream_calls.h"

namespace deimg {
namespace {

constexpr std::uint32_t kHeaderBytes = 26;
constexpr std::uint32_t kSmallestHeap = 6;  // an entry count and the directory offset
constexpr std::uint32_t kLargestDirectory = 32768;
constexpr std::uint16_t kImagePropertyBlock = 0x300A;

struct Slot {
  std::uint16_t tag;
  std::size_t offset;
  std::size_t size;
};

#define DEIMG_SLOT(tag, field) \
  { tag, offsetof(ImageProps, field), sizeof(ImageProps::field) }
constexpr Slot kSlots[] = {
    DEIMG_SLOT(0x5803, slot0),
    DEIMG_SLOT(0x1810, slot1),
    DEIMG_SLOT(0x080B, slot2),
    DEIMG_SLOT(0x102A, shooting),
    DEIMG_SLOT(0x102D, levels),
    DEIMG_SLOT(0x10AA, slot5),
    DEIMG_SLOT(0x1031, sensor),
    DEIMG_SLOT(0x1835, decoder),
    DEIMG_SLOT(0x10C0, slot8),
    DEIMG_SLOT(0x10C1, slot9),
    DEIMG_SLOT(0x10C2, tuningTables),
    DEIMG_SLOT(0x10A8, colourTemperatures),
    // One property: the head word, seven presets and the black levels.
    {0x10A9, offsetof(ImageProps, whiteBalanceHead), 66},
    DEIMG_SLOT(0x0036, tuningBlock),
};
#undef DEIMG_SLOT
static_assert(std::size(kSlots) == 14);

Result FileSize(CallerStream& input, std::uint32_t& size) {
  std::uint32_t position = 0;
  DEIMG_RETURN_IF_FAILED(Tell(input, position));
  DEIMG_RETURN_IF_FAILED(Seek(input, DEIMG_SEEK_END, 0));
  DEIMG_RETURN_IF_FAILED(Tell(input, size));
  return SeekTo(input, position);
}

/// Reads exactly `bytes` bytes at `position`.
Result ReadAt(CallerStream& input, std::uint32_t position, void* buffer, std::uint32_t bytes) {
  DEIMG_RETURN_IF_FAILED(SeekTo(input, position));
  std::uint32_t delivered = 0;
  DEIMG_RETURN_IF_FAILED(Read(input, buffer, bytes, delivered));
  return delivered == bytes ? Result{DEIMG_OK} : Result{DEIMG_PROPS_UNREADABLE};
}

}  // namespace

Result ReadImagePropsBlock(CallerStream& input, ImagePropsBlock& block) {
  std::uint32_t size = 0;
  DEIMG_RETURN_IF_FAILED(FileSize(input, size));
  if (size < kHeaderBytes) return DEIMG_PROPS_UNREADABLE;

  std::uint8_t header[kHeaderBytes];
  DEIMG_RETURN_IF_FAILED(ReadAt(input, 0, header, kHeaderBytes));
  if (header[0] == 'M' && header[1] == 'M') {
    block.bigEndian = true;
  } else if (header[0] != 'I' || header[1] != 'I') {
    return DEIMG_PROPS_UNREADABLE;
  }
  const std::uint32_t heap = LoadU32(header + 2, block.bigEndian);
  if (heap < kHeaderBytes || heap > size) return DEIMG_PROPS_UNREADABLE;
  const std::uint32_t heapLength = size - heap;
  if (heapLength < kSmallestHeap) return DEIMG_PROPS_UNREADABLE;

  std::uint8_t word[4];
  DEIMG_RETURN_IF_FAILED(ReadAt(input, size - 4, word, 4));
  const std::uint32_t directory = LoadU32(word, block.bigEndian);
  if (directory > heapLength - kSmallestHeap) return DEIMG_PROPS_UNREADABLE;
  DEIMG_RETURN_IF_FAILED(ReadAt(input, heap + directory, word, 2));
  const std::uint32_t directoryBytes = LoadU16(word, block.bigEndian) * entry::kBytes + 2;
  if (directoryBytes >= kLargestDirectory) return DEIMG_PROPS_DIRECTORY_TOO_LARGE;
  if (directoryBytes > heapLength - directory) return DEIMG_PROPS_UNREADABLE;

  const auto entries = BlockOf<std::uint8_t>::Uninitialised(directoryBytes);
  if (!entries) return DEIMG_PROPS_OUT_OF_MEMORY;
  DEIMG_RETURN_IF_FAILED(ReadAt(input, heap + directory, entries.get(), directoryBytes));
  for (std::uint32_t at = 2; at < directoryBytes; at += entry::kBytes) {
    if (LoadU16(entries.get() + at, block.bigEndian) != kImagePropertyBlock) continue;
    block.blockSize = LoadU32(entries.get() + at + 2, block.bigEndian);
    block.blockOffset = LoadU32(entries.get() + at + 6, block.bigEndian);
    break;
  }
  if (block.blockOffset > heapLength || block.blockSize > heapLength - block.blockOffset) {
    return DEIMG_PROPS_UNREADABLE;
  }
  block.blockData = BlockOf<std::uint8_t>::Uninitialised(block.blockSize);
  if (!block.blockData) return DEIMG_PROPS_OUT_OF_MEMORY;
  return ReadAt(input, heap + block.blockOffset, block.blockData.get(), block.blockSize);
}

Result pxfPsReadOpenImageProps(const ImagePropsBlock& block, ImageProps& props) {
  PropsHandle heap;
  if (const Result failure = pxfPsReadOpenImagePropsFromMemory(
          block.blockData.get(), block.bigEndian, block.blockSize, &heap)) {
    Print("ERROR:pxfPsReadOpenImageProps () failed. [%08X]\n", failure);
    return DEIMG_PROPS_UNREADABLE;
  }
  auto* const record = reinterpret_cast<std::uint8_t*>(&props);
  std::array<PropsSlot, std::size(kSlots)> slots{};
  for (std::size_t i = 0; i < slots.size(); ++i) {
    slots[i] = {kSlots[i].tag, record + kSlots[i].offset, kSlots[i].size};
  }
  if (PropsRead(heap.get(), slots) != kPropsOk) return DEIMG_PROPS_UNREADABLE;
  return heap.Close() == kPropsOk ? DEIMG_OK : DEIMG_PROPS_UNREADABLE;
}

}  // namespace deimg
