#include "props/props_heap.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/byte_order.h"
#include "platform/platform.h"
#include "props/diagnostics.h"

namespace deimg {
namespace {

constexpr std::uint32_t kMagic = 0xBAB0ACBB;
constexpr std::uint32_t kStructureSize = 20;   // with 32-bit addresses
constexpr int kDeepestSubHeap = 16;            // levels below the block
constexpr std::uint32_t kMostEntries = 65536;  // looked at until every property is found

bool Valid(const PropsHeap* heap) {
  return heap != nullptr && heap->magic == kMagic && heap->structureSize == kStructureSize;
}

void* complibAllocMemory(std::size_t bytes) { return platform::HeapAllocate(bytes, false); }

Result complibFreeMemory(void* memory) {
  if (platform::HeapRelease(memory)) return kPropsOk;
  ReportMessage("COMPL", 2, "HeapFree () failed.");
  return kPropsHeapRefused;
}

/// Copies a record into its slot by its type.
void CopyRecord(const PropsHeap& heap, std::uint16_t type, const std::uint8_t* source,
                std::uint32_t bytes, std::uint8_t* slot) {
  switch (type) {
    case entry::kTypeBytes:
    case entry::kTypeText:
      std::memcpy(slot, source, bytes);
      break;
    case entry::kType16:
      for (std::uint32_t i = 0; i + 2 <= bytes; i += 2) {
        const std::uint16_t value = LoadU16(source + i, heap.bigEndian != 0);
        std::memcpy(slot + i, &value, sizeof(value));
      }
      break;
    case entry::kType32:
      for (std::uint32_t i = 0; i + 4 <= bytes; i += 4) {
        const std::uint32_t value = LoadU32(source + i, heap.bigEndian != 0);
        std::memcpy(slot + i, &value, sizeof(value));
      }
      break;
    default:
      std::memset(slot, 0xFF, 4);
  }
}

/// A walk through a heap and its sub-heaps, in directory order, that takes the first record of
/// every wanted tag.
class Walk {
 public:
  explicit Walk(std::span<PropsSlot> slots) : slots_(slots), missing_(slots.size()) {}

  /// 0 once every slot is filled. A walk that is cut short ends with kPropsUnreadable.
  Result In(const PropsHeap* heap, int depth) {
    if (!Valid(heap)) return kPropsInvalidHandle;
    if (depth > kDeepestSubHeap || heap->size < kOffsetBytes) return kPropsUnreadable;
    const std::uint32_t directory =
        LoadU32(heap->data + heap->size - kOffsetBytes, heap->bigEndian != 0);
    if (directory > heap->size - kCountBytes) return kPropsUnreadable;
    const std::uint32_t count = LoadU16(heap->data + directory, heap->bigEndian != 0);
    if (count * entry::kBytes > heap->size - directory - kCountBytes) return kPropsUnreadable;
    const std::uint8_t* at = heap->data + directory + kCountBytes;
    Result result = kPropsNotFound;
    for (std::uint32_t i = 0; i < count && missing_ != 0; ++i, at += entry::kBytes) {
      if (const Result looked = Look(*heap, at, depth); looked != kPropsNotFound) {
        if (looked == kPropsUnreadable) return looked;
        result = looked;
      }
    }
    return missing_ == 0 ? Result{kPropsOk} : result;
  }

 private:
  static constexpr std::uint32_t kOffsetBytes = 4;
  static constexpr std::uint32_t kCountBytes = 2;

  Result Look(const PropsHeap& heap, const std::uint8_t* at, int depth) {
    if (++entriesSeen_ > kMostEntries) return kPropsUnreadable;
    const std::uint16_t tag = LoadU16(at, heap.bigEndian != 0);
    const std::uint32_t size = LoadU32(at + 2, heap.bigEndian != 0);
    const std::uint32_t offset = LoadU32(at + 6, heap.bigEndian != 0);
    const bool inside = offset <= heap.size && size <= heap.size - offset;
    if (entry::IsSubHeap(tag)) {
      if (!inside) return kPropsUnreadable;
      // Without memory for the handle the walk goes on behind the sub-heap.
      const PropsHandle sub(pxfPsPropsProlog(heap.bigEndian != 0, heap.data + offset, size));
      return sub.get() == nullptr ? Result{COMPLIB_STG_E_INSUFFICIENTMEMORY}
                                  : In(sub.get(), depth + 1);
    }
    for (PropsSlot& slot : slots_) {
      if (slot.tag != tag || slot.filled) continue;
      const bool inEntry = (tag & entry::kLocationMask) == entry::kInEntry;
      if (!inEntry && !inside) return kPropsUnreadable;
      const std::size_t length = inEntry ? 8 : size;
      CopyRecord(heap, tag & entry::kTypeMask, inEntry ? at + 2 : heap.data + offset,
                 static_cast<std::uint32_t>(std::min(length, slot.size)), slot.destination);
      slot.filled = true;
      --missing_;
      break;
    }
    return kPropsNotFound;
  }

  const std::span<PropsSlot> slots_;
  std::size_t missing_;
  std::uint32_t entriesSeen_ = 0;
};

}  // namespace

PropsHandle::PropsHandle(PropsHandle&& other) noexcept
    : heap_(std::exchange(other.heap_, nullptr)) {}

PropsHandle& PropsHandle::operator=(PropsHandle&& other) noexcept {
  std::swap(heap_, other.heap_);
  return *this;
}

PropsHandle::~PropsHandle() {
  if (heap_ != nullptr) Close();
}

Result PropsHandle::Close() {
  PropsHeap* const heap = std::exchange(heap_, nullptr);
  return Valid(heap) ? complibFreeMemory(heap) : Result{kPropsInvalidHandle};
}

PropsHeap* pxfPsPropsProlog(bool bigEndian, const std::uint8_t* data, std::uint32_t size) {
  auto* const heap = static_cast<PropsHeap*>(complibAllocMemory(sizeof(PropsHeap)));
  if (heap == nullptr) {
    Print("::pxfPsPropsProlog:complibAllocMemory () failed.");
    return nullptr;
  }
  *heap = {kMagic, kStructureSize, bigEndian, data, size};
  return heap;
}

Result pxfPsReadOpenImagePropsFromMemory(const std::uint8_t* data, bool bigEndian,
                                         std::uint32_t size, PropsHandle* handle) {
  if (handle == nullptr) return kPropsInvalidHandle;
  *handle = PropsHandle(pxfPsPropsProlog(bigEndian, data, size));
  if (handle->get() != nullptr) return kPropsOk;
  Print(
      "pxfPsReadOpenImagePropsFromMemory:pxfPsPropsProlog () failed. "
      "[COMPLIB_STG_E_INSUFFICIENTMEMORY]");
  return COMPLIB_STG_E_INSUFFICIENTMEMORY;
}

Result PropsRead(const PropsHeap* heap, std::span<PropsSlot> slots) {
  return Walk(slots).In(heap, 0);
}

}  // namespace deimg
